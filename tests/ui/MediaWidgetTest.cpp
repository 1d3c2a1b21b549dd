#include "activities/ActiveLiveActivitiesManager.h"
#include "core/ManualScheduler.h"
#include "core/TimersManager.h"
#include "media/MediaManager.h"

#include "support/FakeMediaEnvironment.h"
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
    ManualScheduler scheduler;
    TimersManager timers{scheduler};
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    ActiveLiveActivitiesManager activities{settings};
    FakeEnvironment environment;
    std::vector<QVariant> clients{QStringList{"mpv", "mpv", ":a"}, QStringList{"mpv", "mpv", ":b"}};
    QStringList sent;
    environment.functions->getClients = [&] { return clients; };
    environment.functions->clientBundleID = [](const QVariant& c) { return c.toStringList().value(0); };
    environment.functions->clientName = [](const QVariant& c) { return c.toStringList().value(1); };
    environment.functions->clientID = [](const QVariant& c) { return c.toStringList().value(2); };
    environment.functions->clientPID = [](const QVariant& c) { return std::optional<qint32>(c.toStringList().value(2) == ":a" ? 1 : 2); };
    environment.functions->sendCommandToApp = [&](MediaCommand command, const QString& client) {
        sent << QString("%1 %2").arg(client).arg(int(command));
        return true;
    };
    MediaManager media({scheduler, timers, settings, activities, environment});
    TrackInfo playing;
    playing.payload = TrackInfo::Payload{};
    playing.payload->title = "Song";
    playing.payload->bundleIdentifier = "mpv";
    playing.payload->clientID = ":a";
    playing.payload->isPlaying = true;
    environment.controller->onTrackInfoReceived(playing);

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
