#pragma once

#include "core/Scheduler.h"
#include "settings/SettingValue.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace kelvane {

// The user's shortcuts: executable files (or links to them) in Kelvane's "Shortcuts" folder. A
// click runs one with no shell between, the files selected in the tray as its arguments; its
// state, exit status and last line of output are kept for the widget and the command line. The
// folder is followed: new, renamed and removed shortcuts show at once.
class ShortcutsManager : public QObject {
    Q_OBJECT
    // The shortcuts the widget shows, in order: each a map of name, label, state, exitStatus and
    // lastLine.
    Q_PROPERTY(QVariantList shown READ shown NOTIFY changed)
    Q_PROPERTY(QString folder READ folder CONSTANT)
public:
    enum class State { idle, running, done, failed };

    struct Shortcut {
        // The file's name: what `shortcutsToDisplay` and the command line call it.
        QString name;
        QString path;
        bool executable = false;
        State state = State::idle;
        // Of the last run: the exit status, or nothing when it crashed or was stopped.
        std::optional<int> exitStatus;
        QString lastLine;
    };

    struct Dependencies {
        Scheduler& scheduler;
        SettingsStore& settings;
        QString folder;
        // The files the shortcut is given: those selected in the tray.
        std::function<QStringList()> selectedFiles = {};
    };
    // A stopped shortcut that has not ended this long after being asked to is killed.
    static constexpr std::chrono::milliseconds stopGrace{3000};
    // Changes in the folder are read once they have settled for this long.
    static constexpr std::chrono::milliseconds rescanDelay{150};

    explicit ShortcutsManager(const Dependencies& dependencies, QObject* parent = nullptr);
    ~ShortcutsManager() override;

    QString folder() const { return m_deps.folder; }
    // Every shortcut in the folder, by name.
    std::vector<const Shortcut*> all() const;
    const Shortcut* shortcut(const QString& name) const;
    QVariantList shown() const;
    // What the button says: the name without its extension.
    static QString labelOf(const QString& name);

    // Starts it with these files (none: the tray's selection); the reason, when it cannot.
    std::optional<QString> run(const QString& name, const QStringList& files);
    Q_INVOKABLE QString runWithSelection(const QString& name);
    // Asks it to end, and ends it if it does not.
    Q_INVOKABLE void stop(const QString& name);
    // Reads the folder again now.
    void rescan();

Q_SIGNALS:
    void changed();
    // A run ended: its last line of output, and whether it succeeded.
    void finished(const QString& name, const QString& lastLine, bool succeeded);

private:
    struct Run;
    void scheduleRescan();
    void ended(const QString& name, Run* run, int exitCode, QProcess::ExitStatus status);

    Dependencies m_deps;
    SettingValue<ShortcutsWidgetSettings> m_settings;
    QFileSystemWatcher m_watcher;
    std::map<QString, Shortcut> m_shortcuts;
    std::map<QString, std::unique_ptr<Run>> m_runs;
    // Files already said to be unusable, so that each is said once.
    std::map<QString, QString> m_refused;
    ScheduledTask m_rescan;
};

} // namespace kelvane
