#include "effects/MediaEffectStyle.h"
#include "settings/Keys.h"
#include "support/FakeMediaEnvironment.h"
#include "ui/QuickNotchWindowFactory.h"
#include "support/Polling.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::FakeEnvironment;
using kelvane::test::Media;
using kelvane::test::waitUntil;

namespace {
// Items by name in the scene, repeated ones included.
QQuickItem* findItem(QQuickItem* root, const QString& name)
{
    if (root->objectName() == name)
        return root;
    for (QQuickItem* child : root->childItems())
        if (QQuickItem* found = findItem(child, name))
            return found;
    return nullptr;
}

// Clicks an item where it is drawn, once the scene has laid it out.
void tap(QQuickWindow& window, const QString& name)
{
    QTest::qWait(100);
    const QQuickItem* item = findItem(window.contentItem(), name);
    ASSERT_TRUE(item) << name.toStdString();
    ASSERT_TRUE(item->isVisible()) << item->objectName().toStdString();
    const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseClick(&window, Qt::LeftButton, {}, centre.toPoint());
}
} // namespace

// The media widget's menu lists the players, pins the one chosen (and lets go of it again) and
// pauses and puts the music away, all on the media manager the notch shows.
TEST(MediaWidget, MenuPinsASourceAndPausesAndDismisses)
{
    QStringList sent;
    Media m(MediaSource::systemWide, [&](FakeEnvironment& e) {
        e.functions->sendCommandToApp = [&](MediaCommand command, const QString& client) {
            sent << QString("%1 %2").arg(client).arg(int(command));
            return true;
        };
    });
    m.clients = {QStringList{"mpv", "mpv", ":a"}, QStringList{"mpv", "mpv", ":b"}};
    MediaManager& media = *m.manager;
    auto& environment = m.environment;
    auto& activities = m.activities;
    TrackInfo playing;
    playing.payload = TrackInfo::Payload{};
    playing.payload->title = "Song";
    playing.payload->bundleIdentifier = "mpv";
    playing.payload->clientID = ":a";
    playing.payload->isPlaying = true;
    m.deliver(playing);

    QuickNotchWindowFactory::registerTypes();
    QQmlEngine engine;
    engine.rootContext()->setContextProperty("mediaManager", &media);
    QQmlComponent component(&engine);
    component.setData(R"(import QtQuick
        Window { width: 300; height: 150; visible: true; color: "black"
            MediaWidget { anchors.fill: parent; anchors.margins: 10; media: mediaManager } })",
                      QUrl("qrc:/kelvane/ui/MediaWidgetTest.qml"));
    std::unique_ptr<QQuickWindow> window(qobject_cast<QQuickWindow*>(component.create()));
    ASSERT_TRUE(window) << component.errorString().toStdString();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    QQuickItem* menu = findItem(window->contentItem(), "mediaMenu");
    ASSERT_TRUE(menu);
    EXPECT_FALSE(menu->isVisible());
    tap(*window, "mediaMenuButton");
    EXPECT_TRUE(menu->isVisible());
    tap(*window, "mediaSource_:b");
    EXPECT_EQ(media.userPinnedClientID(), ":b");
    EXPECT_EQ(environment.controller->pinned, ":b");
    EXPECT_FALSE(menu->isVisible());

    tap(*window, "mediaMenuButton");
    tap(*window, "mediaSource_:b");
    EXPECT_EQ(media.userPinnedClientID(), std::nullopt);

    ASSERT_TRUE(activities.rawActiveLiveActivities().count(LiveActivity::media));
    tap(*window, "mediaMenuButton");
    tap(*window, "mediaPauseAndDismiss");
    EXPECT_EQ(sent, QStringList{":a 1"});
    EXPECT_FALSE(activities.rawActiveLiveActivities().count(LiveActivity::media));
}

// With colouring automatic, the widget takes the artwork's colour (its progress and a glow behind
// the artwork) and rounds the artwork as the settings ask; without it, it stays white and plain.
TEST(MediaWidget, TakesTheArtworksColourWhenColouringIsAutomatic)
{
    Media m(MediaSource::systemWide);
    TrackInfo playing;
    playing.payload = TrackInfo::Payload{};
    playing.payload->title = "Song";
    playing.payload->bundleIdentifier = "mpv";
    playing.payload->isPlaying = true;
    m.deliver(playing);
    m.settings.update(Keys::mediaLiveActivitySettings(), [](MediaLiveActivitySettings& s) { s.albumCornerRadius = 16; });
    MediaEffectStyle style(m.settings, nullptr);
    QImage red(40, 40, QImage::Format_RGB32);
    red.fill(QColor(200, 30, 40));
    style.setArtwork("a", red);
    ASSERT_TRUE(waitUntil([&] { return style.artworkColor().isValid(); }));

    QuickNotchWindowFactory::registerTypes();
    QQmlEngine engine;
    engine.rootContext()->setContextProperty("mediaManager", m.manager.get());
    engine.rootContext()->setContextProperty("mediaStyle", &style);
    QQmlComponent component(&engine);
    component.setData(R"(import QtQuick
        Window { width: 300; height: 150; visible: true; color: "black"
            MediaWidget { anchors.fill: parent; anchors.margins: 10; media: mediaManager; style: mediaStyle } })",
                      QUrl("qrc:/kelvane/ui/MediaWidgetTest.qml"));
    std::unique_ptr<QQuickWindow> window(qobject_cast<QQuickWindow*>(component.create()));
    ASSERT_TRUE(window) << component.errorString().toStdString();
    const QQuickItem* progress = findItem(window->contentItem(), "mediaProgress");
    const QQuickItem* glow = findItem(window->contentItem(), "mediaGlow");
    ASSERT_TRUE(progress && glow);
    const QQuickItem* art = findItem(window->contentItem(), "mediaArtwork");
    ASSERT_TRUE(art);
    EXPECT_EQ(art->property("radius").toReal(), 24.0);

    const QColor tinted = progress->property("color").value<QColor>();
    EXPECT_GT(tinted.red(), 150);
    EXPECT_LT(tinted.green(), 100);
    EXPECT_TRUE(glow->isVisible());

    m.settings.update(Keys::mediaLiveActivitySettings(), [](MediaLiveActivitySettings& s) { s.isAutomaticallyColored = false; });
    EXPECT_EQ(progress->property("color").value<QColor>(), QColor(Qt::white));
    EXPECT_FALSE(glow->isVisible());
}
