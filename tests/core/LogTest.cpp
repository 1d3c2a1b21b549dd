#include "core/Log.h"

#include <gtest/gtest.h>

using namespace kelvane;

TEST(Log, FormatFillsPlaceholdersInOrder)
{
    EXPECT_EQ(formatLog(u"a %d/%d b %{public}@ c", 1, 3, QString("err")), "a 1/3 b err c");
    // Placeholders without an argument stay as they are.
    EXPECT_EQ(formatLog(u"%d and %d", 7), "7 and %d");
}
