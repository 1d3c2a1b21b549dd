#include "ShortcutsManager.h"

#include "core/Log.h"
#include "settings/Keys.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace kelvane {

namespace {

QString stateName(ShortcutsManager::State state)
{
    switch (state) {
    case ShortcutsManager::State::running:
        return QStringLiteral("running");
    case ShortcutsManager::State::done:
        return QStringLiteral("done");
    case ShortcutsManager::State::failed:
        return QStringLiteral("failed");
    case ShortcutsManager::State::idle:
        break;
    }
    return QStringLiteral("idle");
}

// The last line with something on it, of at most a line's worth of characters.
QString lastLineOf(const QByteArray& output)
{
    const QList<QByteArray> lines = output.split('\n');
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        const QString text = QString::fromUtf8(*line).trimmed();
        if (!text.isEmpty())
            return text.size() > 200 ? text.left(199) + QStringLiteral("…") : text;
    }
    return {};
}

} // namespace

struct ShortcutsManager::Run {
    QProcess process;
    // The end of what it printed, enough for its last line.
    QByteArray tail;
    bool stopping = false;
    ScheduledTask kill;
};

ShortcutsManager::ShortcutsManager(const Dependencies& dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_settings(dependencies.settings, Keys::shortcutsWidgetSettings(), this,
                 [this](const ShortcutsWidgetSettings&) { Q_EMIT changed(); })
{
    if (!QDir().mkpath(m_deps.folder))
        logLine(u"ShortcutsManager", QStringLiteral("Could not make the shortcuts folder %1.").arg(m_deps.folder));
    // The folder for new, renamed and removed files, and each file for a change of its mode.
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &ShortcutsManager::scheduleRescan);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &ShortcutsManager::scheduleRescan);
    rescan();
}

ShortcutsManager::~ShortcutsManager()
{
    // What still runs ends with Kelvane; nothing is reported back any more.
    for (auto& [name, run] : m_runs)
        run->process.disconnect(this);
    m_runs.clear();
}

void ShortcutsManager::scheduleRescan()
{
    m_rescan = m_deps.scheduler.schedule(rescanDelay, [this] { rescan(); });
}

void ShortcutsManager::rescan()
{
    m_rescan.cancel();
    if (!m_watcher.directories().contains(m_deps.folder) && QFileInfo(m_deps.folder).isDir())
        m_watcher.addPath(m_deps.folder);
    std::map<QString, Shortcut> found;
    const QFileInfoList entries =
        QDir(m_deps.folder).entryInfoList(QDir::Files | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) {
        Shortcut shortcut;
        shortcut.name = entry.fileName();
        // A link stands for what it points to; a broken one for nothing that can run.
        const QFileInfo target(entry.canonicalFilePath());
        shortcut.path = entry.absoluteFilePath();
        shortcut.executable = target.exists() && target.isFile() && target.isExecutable();
        if (const auto old = m_shortcuts.find(shortcut.name); old != m_shortcuts.end()) {
            shortcut.state = old->second.state;
            shortcut.exitStatus = old->second.exitStatus;
            shortcut.lastLine = old->second.lastLine;
        }
        if (!shortcut.executable) {
            const QString why = target.exists() ? QStringLiteral("it is not executable (chmod +x makes it so)")
                                                : QStringLiteral("it points to nothing");
            if (m_refused[shortcut.name] != why)
                logLine(u"ShortcutsManager", QStringLiteral("%1 is not offered: %2.").arg(shortcut.path, why));
            m_refused[shortcut.name] = why;
        } else {
            m_refused.erase(shortcut.name);
        }
        found.emplace(shortcut.name, std::move(shortcut));
    }
    // What went away is forgotten, its run aside, which ends as it will.
    std::erase_if(m_refused, [&](const auto& entry) { return !found.contains(entry.first); });
    QStringList files;
    for (const auto& [name, shortcut] : found)
        files << shortcut.path;
    const QStringList watched = m_watcher.files();
    if (!watched.isEmpty())
        m_watcher.removePaths(watched);
    if (!files.isEmpty())
        m_watcher.addPaths(files);
    const auto same = [](const std::map<QString, Shortcut>& a, const std::map<QString, Shortcut>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
            return x.first == y.first && x.second.path == y.second.path && x.second.executable == y.second.executable;
        });
    };
    if (same(found, m_shortcuts))
        return;
    m_shortcuts = std::move(found);
    Q_EMIT changed();
}

std::vector<const ShortcutsManager::Shortcut*> ShortcutsManager::all() const
{
    std::vector<const Shortcut*> list;
    for (const auto& [name, shortcut] : m_shortcuts)
        list.push_back(&shortcut);
    return list;
}

const ShortcutsManager::Shortcut* ShortcutsManager::shortcut(const QString& name) const
{
    const auto found = m_shortcuts.find(name);
    return found == m_shortcuts.end() ? nullptr : &found->second;
}

QString ShortcutsManager::labelOf(const QString& name)
{
    const QFileInfo info(name);
    const QString base = name.startsWith(QLatin1Char('.')) ? name : info.completeBaseName();
    return base.isEmpty() ? name : base;
}

QVariantList ShortcutsManager::shown() const
{
    // Those named in the settings, in their order; none named: every usable one, by name.
    std::vector<const Shortcut*> list;
    const auto& chosen = m_settings->shortcutsToDisplay;
    if (chosen.empty()) {
        for (const auto& [name, shortcut] : m_shortcuts)
            if (shortcut.executable)
                list.push_back(&shortcut);
        QCollator collator;
        collator.setCaseSensitivity(Qt::CaseInsensitive);
        collator.setNumericMode(true);
        std::stable_sort(list.begin(), list.end(),
                         [&](const Shortcut* a, const Shortcut* b) { return collator.compare(a->name, b->name) < 0; });
    } else {
        for (const QString& name : chosen)
            if (const Shortcut* shortcut = this->shortcut(name); shortcut && shortcut->executable &&
                                                                 std::ranges::find(list, shortcut) == list.end())
                list.push_back(shortcut);
    }
    QVariantList shown;
    for (const Shortcut* shortcut : list)
        shown.append(QVariantMap{
            {QStringLiteral("name"), shortcut->name},
            {QStringLiteral("label"), labelOf(shortcut->name)},
            {QStringLiteral("state"), stateName(shortcut->state)},
            {QStringLiteral("exitStatus"), shortcut->exitStatus ? QVariant(*shortcut->exitStatus) : QVariant()},
            {QStringLiteral("lastLine"), shortcut->lastLine},
        });
    return shown;
}

std::optional<QString> ShortcutsManager::run(const QString& name, const QStringList& files)
{
    const auto found = m_shortcuts.find(name);
    if (found == m_shortcuts.end())
        return QStringLiteral("There is no shortcut %1 in %2.").arg(name, m_deps.folder);
    Shortcut& shortcut = found->second;
    if (!shortcut.executable)
        return QStringLiteral("%1 is not executable.").arg(shortcut.path);
    if (m_runs.contains(name))
        return QStringLiteral("%1 is running already.").arg(name);

    auto run = std::make_unique<Run>();
    Run* started = run.get();
    run->process.setProcessChannelMode(QProcess::MergedChannels);
    run->process.setWorkingDirectory(QDir::homePath());
    // Nothing to read from: a shortcut that asks ends instead of waiting for ever.
    run->process.setStandardInputFile(QProcess::nullDevice());
    connect(&run->process, &QProcess::readyRead, this, [started] {
        started->tail += started->process.readAll();
        if (started->tail.size() > 8192)
            started->tail = started->tail.right(4096);
    });
    connect(&run->process, &QProcess::finished, this,
            [this, name, started](int code, QProcess::ExitStatus status) { ended(name, started, code, status); });
    // The program itself, its arguments as they are: no shell reads them.
    run->process.start(shortcut.path, files);
    if (!run->process.waitForStarted(5000)) {
        const QString error = run->process.errorString();
        shortcut.state = State::failed;
        shortcut.exitStatus.reset();
        shortcut.lastLine = error;
        Q_EMIT changed();
        return QStringLiteral("%1 could not be started: %2").arg(name, error);
    }
    m_runs.emplace(name, std::move(run));
    shortcut.state = State::running;
    shortcut.exitStatus.reset();
    shortcut.lastLine.clear();
    Q_EMIT changed();
    return std::nullopt;
}

QString ShortcutsManager::runWithSelection(const QString& name)
{
    return run(name, m_deps.selectedFiles ? m_deps.selectedFiles() : QStringList()).value_or(QString());
}

void ShortcutsManager::stop(const QString& name)
{
    const auto found = m_runs.find(name);
    if (found == m_runs.end() || found->second->stopping)
        return;
    Run* run = found->second.get();
    run->stopping = true;
    run->process.terminate();
    run->kill = m_deps.scheduler.schedule(stopGrace, [run] { run->process.kill(); });
}

void ShortcutsManager::ended(const QString& name, Run* run, int exitCode, QProcess::ExitStatus status)
{
    const auto found = m_runs.find(name);
    if (found == m_runs.end() || found->second.get() != run)
        return;
    run->tail += run->process.readAll();
    const bool stopped = run->stopping;
    const bool succeeded = !stopped && status == QProcess::NormalExit && exitCode == 0;
    QString line = lastLineOf(run->tail);
    if (stopped)
        line = QStringLiteral("Stopped");
    // The process is let go of from the main loop: this is its own signal.
    std::shared_ptr<Run> finished(std::move(found->second));
    m_runs.erase(found);
    QMetaObject::invokeMethod(this, [finished] {}, Qt::QueuedConnection);

    if (const auto shortcut = m_shortcuts.find(name); shortcut != m_shortcuts.end()) {
        // Stopped by the user is no failure: the button is as it was before the run.
        shortcut->second.state = stopped ? State::idle : succeeded ? State::done : State::failed;
        shortcut->second.exitStatus =
            status == QProcess::NormalExit && !stopped ? std::optional(exitCode) : std::nullopt;
        shortcut->second.lastLine = line;
        Q_EMIT changed();
    }
    Q_EMIT this->finished(name, line, succeeded);
}

} // namespace kelvane
