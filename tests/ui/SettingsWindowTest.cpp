#include "ui/ApplicationMenu.h"
#include "ui/SettingsWindow.h"

#include "settings/SettingsStore.h"
#include "support/Polling.h"
#include "support/XvfbServer.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::XvfbServer;
using kelvane::test::waitUntil;
using Action = ApplicationMenu::Action;

// The menu's key equivalents reach the focused text field, and the application's own commands
// reach the application; notch windows cannot be closed with them.
TEST(ApplicationMenu, KeyEquivalentsEditTextAndRunTheApplicationsCommands)
{
    QList<Action> actions;
    ApplicationMenu menu([&](Action action) { actions << action; });
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(R"(import QtQuick
        Window { width: 240; height: 60; visible: true; title: "Editor"
            TextInput { objectName: "field"; anchors.fill: parent; text: "hello world"; focus: true } })",
                      QUrl());
    std::unique_ptr<QQuickWindow> window(qobject_cast<QQuickWindow*>(component.create()));
    ASSERT_TRUE(window) << component.errorString().toStdString();
    window->requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QObject* field = window->findChild<QObject*>("field");

    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        QString text;
    } steps[] = {
        {Qt::Key_A, Qt::ControlModifier, "hello world"},
        {Qt::Key_X, Qt::ControlModifier, ""},
        {Qt::Key_Z, Qt::ControlModifier, "hello world"},
        {Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier, ""},
        {Qt::Key_V, Qt::ControlModifier, "hello world"},
        {Qt::Key_V, Qt::ControlModifier, "hello worldhello world"},
    };
    for (const auto& step : steps) {
        QTest::keyClick(window.get(), step.key, step.modifiers);
        EXPECT_EQ(field->property("text").toString(), step.text);
    }
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "hello world");

    QTest::keyClick(window.get(), Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(window.get(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(actions, (QList<Action>{Action::showSettings, Action::quit}));

    window->setFlag(Qt::FramelessWindowHint, true);
    QTest::keyClick(window.get(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_TRUE(window->isVisible());
    window->setFlag(Qt::FramelessWindowHint, false);
    QTest::keyClick(window.get(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
}

// The general page is a real editor of the general settings: a click reaches the store, and a
// change made elsewhere shows on the page.
TEST(SettingsWindow, GeneralPageEditsTheStoredSettings)
{
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    QQmlEngine engine;
    SettingsWindow settingsWindow(engine, settings, {});
    settingsWindow.show({});
    ASSERT_TRUE(waitUntil([] { return XvfbServer::current()->windowGeometries("Settings").size() == 1; }));

    auto* window = qobject_cast<QQuickWindow*>(QGuiApplication::topLevelWindows().last());
    ASSERT_TRUE(window);
    auto* toggle = window->findChild<QQuickItem*>("lockKVWhenTyping");
    ASSERT_TRUE(toggle);
    ASSERT_TRUE(waitUntil([&] { return toggle->isVisible() && window->isExposed(); }));
    EXPECT_FALSE(toggle->property("checked").toBool());

    const QPoint centre = toggle->mapToGlobal(QPointF(20, toggle->height() / 2)).toPoint();
    XvfbServer::current()->run("xdotool", {"mousemove", QString::number(centre.x()),
                                           QString::number(centre.y()), "click", "1"});
    EXPECT_TRUE(waitUntil([&] { return settings.value(Keys::generalSettings()).lockKVWhenTyping; }));

    settings.update(Keys::generalSettings(), [](GeneralSettings& general) { general.lockKVWhenTyping = false; });
    EXPECT_FALSE(toggle->property("checked").toBool());
}
