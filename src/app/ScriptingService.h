#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace kelvane {

class AppDelegate;

// The agent's scripting surface on the session bus: what `kelvanectl` and a second launch ask of
// the running agent. Errors are answered as D-Bus errors whose message is one line for the user.
class ScriptingService : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    explicit ScriptingService(QObject* parent = nullptr);
    // Calls wait in the main loop's queue until the application has started, so the object can
    // be published before the application exists.
    void setDelegate(AppDelegate* delegate) { m_delegate = delegate; }

    static QString errorName();

public Q_SLOTS:
    void Reopen();
    void OpenURLs(const QStringList& urls);
    void ShowSettings(const QString& pane);
    QString State();
    void Open(const QString& tab, const QString& screen);
    void Close(const QString& screen);
    void Hide(const QString& screen);
    void Select(const QString& tab, const QString& screen);
    void Calibrate(const QString& what, const QString& screen);
    QStringList SettingKeys();
    QString GetSetting(const QString& key);
    void SetSetting(const QString& key, const QString& json);
    void ResetSettings();
    QString Activities();
    QString Timers();
    QString AddTimer(const QString& label, const QString& duration);
    void PauseTimer(const QString& id);
    void ResumeTimer(const QString& id);
    void CancelTimer(const QString& id);
    QString TrayList();
    // Both answer once the files are in the tray: how many were added.
    int TrayAdd(const QStringList& paths);
    int TrayPaste();
    void TrayRemove(const QString& nameOrId);
    QString Calendar();
    QString CalendarSources();
    void CalendarAddSource(const QString& path);
    void CalendarRemoveSource(const QString& path);
    QString Notes();
    QString NoteShow(const QString& id);
    // These answer once the change is on the disk.
    QString NoteAdd(const QString& text);
    void NoteRemove(const QString& id);
    QString Todos();
    QString TodoAdd(const QString& text);
    void TodoSetDone(const QString& id, bool done);
    void TodoRemove(const QString& id);
    QString Apps(const QString& search);
    void AppAdd(const QString& id);
    void AppRemove(const QString& id);
    QString Shortcuts();
    // The mirror's state and message, the camera chosen, whether it is open, and every camera.
    QString Mirror();
    // The media effect and whether it hears what plays, the desktop picture and where it comes
    // from, and what the glass bends.
    QString Effects();
    // Answers once it has started; the files are its arguments (none: the tray's selection).
    void ShortcutRun(const QString& name, const QStringList& files);
    void ShortcutStop(const QString& name);
    QString Media();
    void MediaCommand(const QStringList& words);
    void Quit();

private:
    bool ready();
    // Answers the call later, from `done`, with the count it receives.
    std::function<void(int)> replyLater();
    // Answers the call once a change is saved: `value`, or the error.
    std::function<void(const std::optional<QString>&)> replyWhenSaved(const QVariant& value = {});
    void failOn(const std::optional<QString>& error);
    void fail(const QString& message);
    // The number of the note or to-do that `id` names; without one, the call fails.
    enum class Kind { note, todo };
    std::optional<qint64> named(Kind kind, const QString& id);

    AppDelegate* m_delegate = nullptr;
};

} // namespace kelvane
