#include "ui/ApplicationMenu.h"
#include "ui/SettingsWindow.h"

#include "core/LoginItem.h"
#include "settings/SettingsStore.h"
#include "ui/QuickNotchWindowFactory.h"
#include "support/Polling.h"
#include "support/XvfbServer.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
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

namespace {
// The settings window on screen, made with the application's own QML types.
struct ShownSettings {
    InMemorySettingsDomain domain;
    SettingsStore settings{domain};
    QQmlEngine engine;
    std::unique_ptr<SettingsWindow> settingsWindow;

    explicit ShownSettings(const QString& pane = {})
    {
        QuickNotchWindowFactory::registerTypes();
        settingsWindow = std::make_unique<SettingsWindow>(engine, settings);
        show(pane);
    }
    QQuickWindow* window() const { return settingsWindow->window(); }
    void show(const QString& pane)
    {
        settingsWindow->show(pane);
        EXPECT_TRUE(window() && QTest::qWaitForWindowExposed(window()));
        if (window()) {
            EXPECT_TRUE(QTest::qWaitForWindowActive(window()));
        }
        QCoreApplication::processEvents();
    }
    // By name, anywhere in what the window shows.
    QQuickItem* find(const QString& name) const { return findIn(window()->contentItem(), name); }
    static QQuickItem* findIn(QQuickItem* item, const QString& name)
    {
        if (item->objectName() == name)
            return item;
        for (QQuickItem* child : item->childItems())
            if (QQuickItem* found = findIn(child, name))
                return found;
        return nullptr;
    }
    QJsonValue stored(const QString& key) const { return settings.jsonValue(key).value_or(QJsonValue()); }
};

void typeText(QWindow* window, const QString& text)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, window, Qt::Key(c.toUpper().unicode()), QString(c), Qt::NoModifier);
}

// The item of the pane a control sits in.
QString paneOf(const QQuickItem* item)
{
    for (; item; item = item->parentItem())
        if (item->objectName().startsWith(QLatin1StringView("pane.")))
            return item->objectName().mid(5);
    return {};
}
} // namespace

// Every setting the user owns has a control for each of its members, in the pane that owns it;
// only the version last run, the application's own record, has none.
TEST(SettingsWindow, EverySettingHasAControlForEachMemberInItsPane)
{
    ShownSettings shown;
    ASSERT_TRUE(shown.window());
    QStringList missing;
    const QVariantMap defaults = Keys::registrationDefaults();
    for (auto it = defaults.begin(); it != defaults.end(); ++it) {
        const QString& key = it.key();
        if (key == QLatin1StringView("lastVersionNumber"))
            continue;
        QString owner;
        for (const QString& pane : SettingsWindow::panes())
            if (SettingsWindow::settingsOf(pane).contains(key))
                owner = pane;
        if (owner.isEmpty()) {
            missing << key + " (no pane)";
            continue;
        }
        QStringList names;
        for (const QString& member : SettingsStore::memberNames(key))
            names << key + "." + member;
        if (names.isEmpty())
            names << key;
        for (const QString& name : names) {
            const QQuickItem* control = shown.find(name);
            if (!control || paneOf(control) != owner)
                missing << name + " in " + owner;
        }
    }
    EXPECT_TRUE(missing.isEmpty()) << missing.join(", ").toStdString();
}

// Each kind of control changes the stored setting, driven from the keyboard alone.
TEST(SettingsWindow, EachKindOfControlChangesTheStoreFromTheKeyboard)
{
    ShownSettings shown;
    ASSERT_TRUE(shown.window());
    const QString gif = QDir::tempPath() + "/my anim.gif";
    const struct {
        const char* pane;
        const char* control;
        std::function<void(QQuickWindow*)> keys;
        std::function<bool(const ShownSettings&)> done;
    } cases[] = {
        {"general", "generalSettings.lockKVWhenTyping", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Space); },
         [](const ShownSettings& s) { return s.settings.value(Keys::generalSettings()).lockKVWhenTyping; }},
        {"general", "generalSettings.showInFullscreen", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Down); },
         [](const ShownSettings& s) { return s.settings.value(Keys::generalSettings()).showInFullscreen == FullscreenOption::never; }},
        {"general", "preferredOpenMode", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Down); },
         [](const ShownSettings& s) { return s.settings.value(Keys::preferredOpenMode()) == "tray"; }},
        {"general", "generalSettings.handleSize", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Up); },
         [](const ShownSettings& s) { return s.settings.value(Keys::generalSettings()).handleSize == QSizeF(185, 8); }},
        {"liquid", "liquidBasicSettings.frost", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Right); },
         [](const ShownSettings& s) { return s.settings.value(Keys::liquidBasicSettings()).frost > 0; }},
        {"liquid", "liquidBasicSettings.tint", [](QQuickWindow* w) {
             QTest::keyClick(w, Qt::Key_Space);
             QTest::keyClick(w, Qt::Key_Tab);
             QTest::keyClick(w, Qt::Key_Left);
         }, [](const ShownSettings& s) { return s.settings.value(Keys::liquidBasicSettings()).tint.r < 1; }},
        {"tuckle", "tuckleSettings.enabledWidgets", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Space); },
         [](const ShownSettings& s) { return s.settings.value(Keys::tuckleSettings()).enabledWidgets == std::vector{TuckleWidget::mirror}; }},
        {"tuckle", "calendarWidgetSettings.numberOfDaysAheadToDisplay", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Up); },
         [](const ShownSettings& s) { return s.settings.value(Keys::calendarWidgetSettings()).numberOfDaysAheadToDisplay == 8; }},
        {"tuckle", "shortcutsWidgetSettings.shortcutButtonWidth", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Down); },
         [](const ShownSettings& s) { return s.settings.value(Keys::shortcutsWidgetSettings()).shortcutButtonWidth.value == 3; }},
        {"tuckle", "mediaWidgetSettings.size", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Up); },
         [](const ShownSettings& s) { return s.settings.value(Keys::mediaWidgetSettings()).size.width.value == 6; }},
        {"tuckle", "shortcutsWidgetSettings.shortcutsToDisplay", [](QQuickWindow* w) {
             typeText(w, "Back up");
             QTest::keyClick(w, Qt::Key_Return);
         }, [](const ShownSettings& s) { return s.settings.value(Keys::shortcutsWidgetSettings()).shortcutsToDisplay == std::vector<QString>{"Back up"}; }},
        {"liveActivities", "liveActivitiesSettings.enabledLiveActivities", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Space); },
         [](const ShownSettings& s) { return s.settings.value(Keys::liveActivitiesSettings()).enabledLiveActivities == std::set{LiveActivity::tray}; }},
        {"liveActivities", "calendarLiveActivitySettings.appearanceMode", [](QQuickWindow* w) { QTest::keyClick(w, Qt::Key_Down); },
         [](const ShownSettings& s) { return s.settings.value(Keys::calendarLiveActivitySettings()).appearanceMode.kind == AppearanceMode::Kind::periodic; }},
        {"liveActivities", "mediaLiveActivitySettings.customGifURL", [&](QQuickWindow* w) {
             typeText(w, gif);
             QTest::keyClick(w, Qt::Key_Return);
         }, [&](const ShownSettings& s) { return s.settings.value(Keys::mediaLiveActivitySettings()).customGifURL == QUrl::fromLocalFile(gif); }},
    };
    // The animation's own file is chosen only with the animation effect.
    shown.settings.update(Keys::mediaLiveActivitySettings(),
                          [](MediaLiveActivitySettings& media) { media.effect = MediaLiveActivityEffectEnum::gif; });
    for (const auto& c : cases) {
        SCOPED_TRACE(c.control);
        shown.show(QString::fromLatin1(c.pane));
        QQuickItem* control = shown.find(QString::fromLatin1(c.control));
        ASSERT_TRUE(control);
        auto* input = control->property("input").value<QQuickItem*>();
        ASSERT_TRUE(input);
        input->forceActiveFocus(Qt::TabFocusReason);
        ASSERT_TRUE(waitUntil([&] { return input->hasActiveFocus(); }));
        c.keys(shown.window());
        const QString key = QString::fromLatin1(c.control).section('.', 0, 0);
        EXPECT_TRUE(waitUntil([&] { return c.done(shown); }, 2000))
            << QJsonDocument(QJsonObject{{key, shown.stored(key)}}).toJson(QJsonDocument::Compact).toStdString()
            << " focus on " << shown.window()->activeFocusItem() << " "
            << input->property("text").toString().toStdString();
    }

    // A change made elsewhere shows on the page.
    auto* toggle = shown.find("generalSettings.lockKVWhenTyping");
    shown.settings.update(Keys::generalSettings(), [](GeneralSettings& general) { general.lockKVWhenTyping = false; });
    EXPECT_FALSE(toggle->property("checked").toBool());
}

// A saved frame too small to use is forgotten at start; a good one is where the window opens,
// and where it is left is kept.
TEST(SettingsWindow, ForgetsAFrameTooSmallAndOpensWhereItWasLeft)
{
    const struct {
        const char* stored;
        bool kept;
    } frames[] = {{"10 20 150 500", false}, {"10 20 600 100", false}, {"ten 20 600 400", false},
                  {"10 20 600", false},     {"10 20 200 120", true},  {"100 80 640 480", true}};
    for (const auto& frame : frames) {
        InMemorySettingsDomain domain;
        domain.setValue(SettingsWindow::frameKey, QString::fromLatin1(frame.stored));
        SettingsStore settings(domain);
        QQmlEngine engine;
        SettingsWindow settingsWindow(engine, settings);
        EXPECT_EQ(domain.contains(SettingsWindow::frameKey), frame.kept) << frame.stored;
    }

    ShownSettings shown;
    ShownSettings* first = &shown;
    first->window()->setGeometry(120, 90, 700, 520);
    ASSERT_TRUE(waitUntil([&] { return first->window()->geometry() == QRect(120, 90, 700, 520); }));
    first->window()->close();
    EXPECT_EQ(shown.domain.value(SettingsWindow::frameKey).toString(), "120 90 700 520");

    QQmlEngine engine;
    SettingsWindow again(engine, shown.settings);
    again.show({});
    ASSERT_TRUE(again.window() && QTest::qWaitForWindowExposed(again.window()));
    EXPECT_EQ(again.window()->geometry(), QRect(120, 90, 700, 520));
}

// With the mouse as a person would: a switch, a slider and a widget dragged to the front; and a
// picture of every pane.
TEST(SettingsWindow, DrivenWithTheMouseAndPicturedPaneByPane)
{
    ShownSettings shown;
    ASSERT_TRUE(shown.window());
    shown.window()->setGeometry(40, 40, 760, 900);
    const auto xdotool = [](const QStringList& args) {
        XvfbServer::current()->run("xdotool", args);
        QTest::qWait(60);
    };
    const auto at = [](const QPoint& point) {
        return QStringList{"mousemove", QString::number(point.x()), QString::number(point.y())};
    };
    const auto clickAt = [&](const QPoint& point) { xdotool(at(point) << "click" << "1"); };
    // Pressed, moved in steps as a hand does, and let go.
    const auto dragFrom = [&](const QPoint& from, const QPoint& to) {
        xdotool(at(from) << "mousedown" << "1");
        for (int step = 1; step <= 6; ++step)
            xdotool(at(from + (to - from) * step / 6));
        xdotool({"mouseup", "1"});
    };
    const auto centreOf = [](const QQuickItem* item, qreal x = -1) {
        return item->mapToGlobal(QPointF(x < 0 ? item->width() / 2 : x, item->height() / 2)).toPoint();
    };

    shown.show("gestures");
    auto* allow = shown.find("gestureControlSettings.allowGestures");
    ASSERT_TRUE(allow && waitUntil([&] { return allow->isVisible(); }));
    clickAt(centreOf(allow, 20));
    EXPECT_TRUE(waitUntil([&] { return !shown.settings.value(Keys::gestureControlSettings()).allowGestures; }));

    shown.show("tuckle");
    auto* blur = shown.find("tuckleSettings.wallpaperBlur")->property("input").value<QQuickItem*>();
    ASSERT_TRUE(blur && waitUntil([&] { return blur->isVisible(); }));
    clickAt(blur->mapToGlobal(QPointF(blur->width() * 0.9, blur->height() / 2)).toPoint());
    EXPECT_TRUE(waitUntil([&] { return shown.settings.value(Keys::tuckleSettings()).wallpaperBlur > 15; }))
        << shown.settings.value(Keys::tuckleSettings()).wallpaperBlur;

    // The mirror's handle dragged above the media row: the mirror comes first.
    auto* mirror = shown.find("widgetRow.mirror");
    auto* media = shown.find("widgetRow.media");
    ASSERT_TRUE(mirror && media);
    auto* handle = ShownSettings::findIn(mirror, "handle");
    ASSERT_TRUE(handle);
    dragFrom(centreOf(handle), QPoint(centreOf(handle).x(), media->mapToGlobal(QPointF(0, 4)).toPoint().y()));
    EXPECT_TRUE(waitUntil([&] {
        return shown.settings.value(Keys::tuckleSettings()).enabledWidgets ==
               std::vector{TuckleWidget::mirror, TuckleWidget::media};
    }));

    QDir().mkpath(KELVANE_ARTIFACTS);
    for (const QString& pane : SettingsWindow::panes()) {
        shown.show(pane);
        QTest::qWait(300);
        const QRect frame = shown.window()->geometry();
        XvfbServer::current()->run("import", {"-window", "root", "-crop",
                                              QStringLiteral("%1x%2+%3+%4").arg(frame.width()).arg(frame.height())
                                                  .arg(frame.x()).arg(frame.y()),
                                              QStringLiteral(KELVANE_ARTIFACTS "/settings-%1.png").arg(pane)});
        EXPECT_TRUE(QFile::exists(QStringLiteral(KELVANE_ARTIFACTS "/settings-%1.png").arg(pane)));
    }
}

namespace {
// The desktop's record of starting at login, kept in memory; it may refuse to change.
struct MemoryLoginItem : LoginItem {
    bool enabled = false;
    std::optional<QString> refusal;
    bool isEnabled() const override { return enabled; }
    std::optional<QString> setEnabled(bool start) override
    {
        if (!refusal)
            enabled = start;
        return refusal;
    }
};
} // namespace

// The start-at-login switch shows what the desktop has when the window comes forward, changes
// it with a click, and says so when the desktop's record cannot be written.
TEST(SettingsWindow, StartAtLoginFollowsTheDesktopsRecord)
{
    InMemorySettingsDomain domain;
    SettingsStore settings(domain);
    QQmlEngine engine;
    MemoryLoginItem login;
    login.enabled = true;
    SettingsWindow::Hooks hooks;
    hooks.loginItem = &login;
    SettingsWindow settingsWindow(engine, settings, hooks);
    settingsWindow.show({});
    ASSERT_TRUE(waitUntil([] { return XvfbServer::current()->windowGeometries("Kelvane Settings").size() == 1; }));
    QQuickWindow* window = settingsWindow.window();
    ASSERT_TRUE(window);
    auto* toggle = ShownSettings::findIn(window->contentItem(), "startAtLogin");
    ASSERT_TRUE(toggle);
    ASSERT_TRUE(waitUntil([&] { return toggle->isVisible() && window->isExposed(); }));
    EXPECT_TRUE(toggle->property("checked").toBool());

    const auto click = [&] {
        const QPoint centre = toggle->mapToGlobal(QPointF(20, toggle->height() / 2)).toPoint();
        XvfbServer::current()->run("xdotool", {"mousemove", QString::number(centre.x()),
                                               QString::number(centre.y()), "click", "1"});
    };
    click();
    EXPECT_TRUE(waitUntil([&] { return !login.enabled; }));
    EXPECT_TRUE(waitUntil([&] { return !toggle->property("checked").toBool(); }));

    // Changed elsewhere: seen when the window is shown again.
    login.enabled = true;
    settingsWindow.show({});
    EXPECT_TRUE(toggle->property("checked").toBool());

    login.refusal = QStringLiteral("/home/u/.config/autostart/k.desktop could not be written (Permission denied).");
    click();
    EXPECT_TRUE(waitUntil([&] { return settingsWindow.startAtLoginError() == *login.refusal; }));
    EXPECT_TRUE(waitUntil([&] { return toggle->property("checked").toBool(); })) << "still what the desktop has";
}

// When the desktop prefers dark colours the window takes them, and light ones again after.
TEST(SettingsWindow, TakesDarkColoursWhenTheDesktopPrefersThem)
{
    ShownSettings shown("tuckle");
    ASSERT_TRUE(shown.window());
    const auto grey = [&](int x) {
        const QImage picture = shown.window()->grabWindow();
        return qGray(picture.pixel(x, picture.height() - 10));
    };
    // Beside the list of panes, and in the pane.
    EXPECT_GT(grey(10), 180);
    EXPECT_GT(grey(400), 180);
    shown.settingsWindow->setDark(true);
    EXPECT_TRUE(waitUntil([&] { return grey(10) < 80 && grey(400) < 80; })) << grey(10) << " " << grey(400);
    QDir().mkpath(KELVANE_ARTIFACTS);
    shown.window()->grabWindow().save(KELVANE_ARTIFACTS "/settings-dark.png");
    shown.settingsWindow->setDark(false);
    EXPECT_TRUE(waitUntil([&] { return grey(10) > 180 && grey(400) > 180; })) << grey(10) << " " << grey(400);
}
