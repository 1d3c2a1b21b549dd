#include "platform/linux/QtScreenProvider.h"

#include "support/Polling.h"
#include "support/XvfbServer.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::XvfbServer;

// The X server has two monitors: M1 1512x982 (400x260 mm, primary) and M2 1280x800 beside it.
TEST(QtScreenProvider, DescribesEveryMonitorWithItsSizeInMillimetres)
{
    QtScreenProvider provider;
    const QList<ScreenInfo> screens = provider.screens();
    ASSERT_EQ(screens.size(), 2);
    EXPECT_EQ(screens[0].number, "M1");
    EXPECT_EQ(screens[0].frame, QRectF(0, 0, 1512, 982));
    EXPECT_EQ(screens[0].physicalSizeMm, QSizeF(400, 260));
    EXPECT_EQ(screens[1].number, "M2");
    EXPECT_EQ(screens[1].frame, QRectF(1512, 0, 1280, 800));
    EXPECT_EQ(screens[1].physicalSizeMm, QSizeF(340, 212));
    for (const ScreenInfo& s : screens) {
        EXPECT_EQ(s.backingScaleFactor, 1.0);
        EXPECT_EQ(s.safeAreaTopInset, 0.0);
        EXPECT_TRUE(s.colorSpace.has_value());
    }
    EXPECT_EQ(provider.mainScreen(), QGuiApplication::primaryScreen());
    EXPECT_EQ(screens[0].handle, QGuiApplication::primaryScreen());
}

TEST(QtScreenProvider, AnnouncesUnplugAndReplug)
{
    QtScreenProvider provider;
    QSignalSpy changes(&provider, &ScreenProvider::screenParametersChanged);
    ASSERT_TRUE(XvfbServer::current()->removeMonitor("M2"));
    ASSERT_TRUE(test::waitUntil([&] { return provider.screens().size() == 1; }));
    EXPECT_GE(changes.count(), 1);

    const int before = changes.count();
    ASSERT_TRUE(XvfbServer::current()->addMonitor({"M2", QRect(1512, 0, 1280, 800), QSize(340, 212), false}));
    ASSERT_TRUE(test::waitUntil([&] { return provider.screens().size() == 2; }));
    EXPECT_GT(changes.count(), before);
    EXPECT_EQ(provider.screens()[1].frame, QRectF(1512, 0, 1280, 800));
}
