#include "ui/SpringValue.h"

#include "support/Polling.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <algorithm>

using namespace kelvane;

// The value the views draw with: jumps to its first target, then springs to the next, overshooting
// only with an underdamped spring, and stops ticking once it has settled.
TEST(SpringValue, FollowsItsTargetAlongTheSpringAndStops)
{
    for (const Spring& spring : {Springs::animation, Springs::closePlain}) {
        SpringValue value;
        value.setSpring(spring);
        value.setTarget(32);
        EXPECT_EQ(value.value(), 32);
        EXPECT_FALSE(value.running());

        double peak = 0;
        QObject::connect(&value, &SpringValue::valueChanged, [&] { peak = std::max(peak, value.value()); });
        value.setTarget(157);
        EXPECT_TRUE(value.running());
        ASSERT_TRUE(test::waitUntil([&] { return !value.running(); }, 5000));
        EXPECT_EQ(value.value(), 157);
        if (spring.dampingFraction < 1)
            EXPECT_GT(peak, 157 + 10);
        else
            EXPECT_LE(peak, 157.0);
    }
}
