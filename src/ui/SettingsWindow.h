#pragma once

#include <QObject>
#include <QRect>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <map>
#include <memory>

class QQmlEngine;
class QQuickWindow;

namespace kelvane {

class LoginItem;
class SettingsStore;
class SettingsRecordModel;

// What the window asks of the rest of the application; each may be left empty.
struct SettingsWindowHooks {
    std::function<void()> quit;
    // Shows a notch's calibration face: "width", "height", or "done" to end it.
    std::function<void(const QString&)> calibrate;
    // The desktop's record of starting at login.
    LoginItem* loginItem = nullptr;
    // {title, path} of the folders and files the application keeps.
    QVariantList places;
    // Shows what changed in each version.
    std::function<void()> showChangeLog;
    // The cameras there are now, as {value: id, title: description}.
    std::function<QVariantList()> cameras;
};

// The settings window: made on first use, then shown and brought forward on every request. Each
// of its panes edits the settings it owns, every member of them, through the store.
class SettingsWindow : public QObject {
    Q_OBJECT
    Q_PROPERTY(QStringList panes READ panes CONSTANT)
    Q_PROPERTY(QString version READ version CONSTANT)
    // The folders and files the application keeps, as {title, path} for the About pane.
    Q_PROPERTY(QVariantList places READ places CONSTANT)
    // The languages a code note can be coloured as.
    Q_PROPERTY(QStringList codeLanguages READ codeLanguages CONSTANT)
    // Dark colours, as the desktop prefers.
    Q_PROPERTY(bool dark READ dark WRITE setDark NOTIFY darkChanged)
    // Whether the desktop starts the application at login, as read when the window was last shown.
    Q_PROPERTY(bool startAtLogin READ startAtLogin WRITE setStartAtLogin NOTIFY startAtLoginChanged)
    // Why the last change to it failed; empty when it did not.
    Q_PROPERTY(QString startAtLoginError READ startAtLoginError NOTIFY startAtLoginChanged)
public:
    using Hooks = SettingsWindowHooks;

    // Where the window's last frame is kept, as "x y width height" in points.
    static constexpr char frameKey[] = "SettingsWindowFrame";

    // A saved frame too small to use is forgotten here, so the window opens at its own size.
    SettingsWindow(QQmlEngine& engine, SettingsStore& settings, Hooks hooks = {}, QObject* parent = nullptr);
    ~SettingsWindow() override;

    // The panes it has, by name, in the order they are listed.
    static QStringList panes();
    // The settings a pane edits, by key.
    static QStringList settingsOf(const QString& pane);
    // Shows the window in front; an empty pane keeps the page that was shown last.
    void show(const QString& pane);
    bool isVisible() const;
    QQuickWindow* window() const { return m_window.get(); }

    // One setting for the panes to bind to and edit, made on first use.
    Q_INVOKABLE QObject* setting(const QString& key);
    Q_INVOKABLE void resetDefaults();
    Q_INVOKABLE void quit();
    Q_INVOKABLE void calibrate(const QString& what);
    Q_INVOKABLE void openPlace(const QString& path);
    Q_INVOKABLE QVariantList cameras() const;
    Q_INVOKABLE void showChangeLog();

    QString version() const;
    QVariantList places() const { return m_hooks.places; }
    static QStringList codeLanguages();
    bool dark() const { return m_dark; }
    void setDark(bool dark);
    bool startAtLogin() const { return m_startAtLogin; }
    void setStartAtLogin(bool start);
    QString startAtLoginError() const { return m_startAtLoginError; }

Q_SIGNALS:
    void paneRequested(const QString& pane);
    void startAtLoginChanged();
    void darkChanged();

private:
    void create();
    void readStartAtLogin();
    std::optional<QRect> savedFrame() const;
    void saveFrame();

    QQmlEngine& m_engine;
    SettingsStore& m_settings;
    Hooks m_hooks;
    bool m_startAtLogin = false;
    bool m_dark = false;
    QString m_startAtLoginError;
    std::map<QString, std::unique_ptr<SettingsRecordModel>> m_records;
    std::unique_ptr<QQuickWindow> m_window;
};

} // namespace kelvane
