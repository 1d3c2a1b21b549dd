#include "core/Spring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace kelvane;

namespace {
double maxProgress(const Spring& spring)
{
    double peak = 0;
    for (double t = 0; t < 3.0; t += 0.0005)
        peak = std::max(peak, spring.progress(t));
    return peak;
}
} // namespace

// Every named spring: the damping fraction decides whether the notch overshoots its size, the
// response how quickly it gets there.
TEST(Spring, NamedSpringsOvershootExactlyWhenUnderdamped)
{
    struct Case {
        const char* name;
        Spring spring;
        double response;
        double damping;
    };
    const Case cases[] = {
        {"animation", Springs::animation, 0.5, 0.625},
        {"intenseAnimation", Springs::intenseAnimation, 0.5, 0.55},
        {"liquidOpenFootprint", Springs::liquidOpenFootprint, 0.5, 0.6},
        {"liquidCloseFootprint", Springs::liquidCloseFootprint, 0.62, 0.62},
        {"closePlain", Springs::closePlain, 0.4, 1.0},
        {"unhide", Springs::unhide, 0.5, 1.0},
        {"indicatorResize", Springs::indicatorResize, 0.3, 0.7},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_DOUBLE_EQ(c.spring.response, c.response);
        EXPECT_DOUBLE_EQ(c.spring.dampingFraction, c.damping);
        EXPECT_DOUBLE_EQ(c.spring.blendDuration, 0.0);

        const double peak = maxProgress(c.spring);
        if (c.damping < 1.0) {
            EXPECT_GT(peak, 1.01);
            EXPECT_NEAR(peak - 1.0, c.spring.peakOvershoot(), 1e-3);
        } else {
            EXPECT_LE(peak, 1.0 + 1e-9);
            EXPECT_EQ(c.spring.peakOvershoot(), 0.0);
        }
        const double settle = c.spring.settlingTime(0.001);
        EXPECT_GT(settle, 0.0);
        EXPECT_LT(settle, 3.0);
        for (double t = settle; t < settle + 2.0; t += 0.01)
            ASSERT_NEAR(c.spring.progress(t), 1.0, 0.001) << "t=" << t;
    }
}

// The velocity reported is the derivative of the displacement, in all three damping regimes and
// from a moving start (a spring retargeted mid-flight).
TEST(Spring, VelocityIsTheDerivativeOfDisplacement)
{
    for (double damping : {0.3, 1.0, 1.8}) {
        const Spring spring{0.5, damping, 0};
        for (double t : {0.0, 0.05, 0.2, 0.6}) {
            const double h = 1e-6;
            const double numeric =
                (spring.displacement(t + h, 40, -120) - spring.displacement(t - h, 40, -120)) / (2 * h);
            EXPECT_NEAR(spring.velocity(t, 40, -120), t == 0.0 ? -120 : numeric, 1e-3)
                << "damping " << damping << " t " << t;
        }
        EXPECT_DOUBLE_EQ(spring.displacement(0, 40, -120), 40);
    }
}
