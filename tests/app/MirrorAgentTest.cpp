#include "support/AgentProcess.h"
#include "support/PipeWireCamera.h"
#include "support/Polling.h"
#include "support/ScopedEnvironment.h"
#include "support/SessionBus.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {

QJsonObject mirror() { return ctlJson({"mirror"}); }

void showOnlyTheMirror()
{
    ASSERT_EQ(ctl({"settings", "set", "tuckleSettings",
                   R"({"enabled":true,"enabledWidgets":["mirror"],"showDividers":true,"size":{"height":{"value":2},"width":{"value":11}},"wallpaper":"none","wallpaperBlur":4,"widgetsPadding":12})"})
                  .status,
              0);
}

// The pixels of the open notch on the first screen that pass the test.
template <class Test>
int pixelsInNotch(const QString& picture, Test test)
{
    const QImage image(picture);
    const QJsonObject window = notch("M1")["window"].toObject();
    const int left = int(window["x"].toDouble()), width = int(window["width"].toDouble());
    int count = 0;
    for (int y = 0; y < 200 && y < image.height(); ++y)
        for (int x = left; x < left + width && x < image.width(); ++x)
            count += test(image.pixelColor(x, y)) ? 1 : 0;
    return count;
}

} // namespace

TEST(MirrorAgent, WithoutACameraTheWidgetSaysSo)
{
    TemporaryHome home;
    SessionBus session;
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    showOnlyTheMirror();
    EXPECT_EQ(mirror()["state"], "noCamera");
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return notch("M1")["mode"] == "tuckle"; }));
    const QString picture = screenshot("mirror-no-camera");
    EXPECT_EQ(mirror()["state"], "noCamera");
    EXPECT_EQ(mirror()["open"], false);
    EXPECT_TRUE(mirror()["cameras"].toArray().isEmpty());
    // The widget's tile is drawn, with the struck-through camera in grey on it.
    EXPECT_GT(pixelsInNotch(picture, [](const QColor& c) { return c == QColor(0x1c, 0x1c, 0x1e); }), 3000);
    EXPECT_GT(pixelsInNotch(picture, [](const QColor& c) { return c == QColor(0x8e, 0x8e, 0x93); }), 40);
}

TEST(MirrorAgent, TheCameraShowsWhileTheWidgetIsOnScreenAndIsLetGoOfWhenThePanelCloses)
{
    REQUIRE_PIPEWIRE();
    TemporaryHome home;
    // GStreamer's plugin registry is shared between the tests' fresh homes: built once, not by each
    // agent again (which takes seconds under the sanitizers).
    ScopedEnvironment env;
    env.set("GST_REGISTRY_1_0", QByteArray(KELVANE_ARTIFACTS) + "/gstreamer-registry.bin");
    SessionBus session;
    PipeWireCamera camera;
    ASSERT_TRUE(PipeWireCamera::offered());
    RunningAgent agent;
    ASSERT_TRUE(agent.waitForNotches(2));
    showOnlyTheMirror();
    ASSERT_TRUE(waitUntil([] { return mirror()["cameras"].toArray().size() == 1; }, 10000));
    EXPECT_EQ(mirror()["state"], "waiting");
    EXPECT_EQ(PipeWireCamera::readers(), 0) << "the camera is not read while the notch is closed";

    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
        ASSERT_TRUE(waitUntil([] { return mirror()["state"] == "showing"; }, 30000))
            << QJsonDocument(mirror()).toJson().toStdString() << agent.readOutput().toStdString();
        EXPECT_EQ(PipeWireCamera::readers(), 1);
        const QString picture = screenshot("mirror-test-camera", 600);
        // The colour bars show: red, and yellow beside it.
        EXPECT_GT(pixelsInNotch(picture, [](const QColor& c) { return c.red() > 150 && c.green() < 60 && c.blue() < 60; }), 200);
        EXPECT_GT(pixelsInNotch(picture, [](const QColor& c) { return c.red() > 150 && c.green() > 150 && c.blue() < 60; }), 200);

        ASSERT_EQ(ctl({"close"}).status, 0);
        EXPECT_TRUE(waitUntil([] { return PipeWireCamera::readers() == 0; }, 3000)) << "the camera's light stays on";
        EXPECT_EQ(mirror()["open"], false);
    }
    // The Tray tab hides the widget: the camera is let go of there too.
    ASSERT_EQ(ctl({"open", "tuckle"}).status, 0);
    ASSERT_TRUE(waitUntil([] { return PipeWireCamera::readers() == 1; }, 10000));
    ASSERT_EQ(ctl({"select", "tray"}).status, 0);
    EXPECT_TRUE(waitUntil([] { return PipeWireCamera::readers() == 0; }, 3000));
}
