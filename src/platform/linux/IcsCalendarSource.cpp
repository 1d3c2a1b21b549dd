#include "IcsCalendarSource.h"

#include "IcalCalendar.h"

#include "calendar/CalendarFileList.h"
#include "calendar/CalendarRules.h"
#include "core/HandOff.h"
#include "core/Log.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTimer>

#include <map>
#include <optional>

namespace kelvane {

namespace {

// Changes come in bursts (a synchronisation writes many files); they are read once it settles.
constexpr int settleMs = 15;

void calendarLine(const QString& message) { logLine(u"Calendar", message); }

QString firstLine(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readLine(4096)).trimmed();
}

QStringList icsFiles(const QDir& dir)
{
    QStringList files;
    for (const QFileInfo& info : dir.entryInfoList({QStringLiteral("*.ics"), QStringLiteral("*.ICS")},
                                                   QDir::Files | QDir::Readable, QDir::Name))
        files.append(info.absoluteFilePath());
    return files;
}

} // namespace

// Lives on the source's thread: owns the parsed files, the watches and the expansion.
class IcsWorker : public QObject {
    Q_OBJECT
public:
    IcsWorker()
    {
        m_settle.setSingleShot(true);
        m_settle.setInterval(settleMs);
        connect(&m_settle, &QTimer::timeout, this, &IcsWorker::rescan);
        connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_settle, qOverload<>(&QTimer::start));
        connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settle, qOverload<>(&QTimer::start));
    }

    void setPaths(const QStringList& paths)
    {
        m_paths = paths;
        rescan();
    }

    void setRange(const QDateTime& from, const QDateTime& to)
    {
        m_from = from;
        m_to = to;
        m_sent.clear();
        rescan();
    }

Q_SIGNALS:
    void calendarChanged(const kelvane::CalendarInfo& calendar, const QList<kelvane::CalendarEvent>& events);
    void calendarRemoved(const QString& id);

private:
    struct Parsed {
        QDateTime modified;
        qint64 size = -1;
        std::optional<IcalCalendar> calendar;
    };
    struct Found {
        CalendarInfo info;
        QStringList files;
        QString folder;
    };

    // The calendars the listed paths hold now: a file is one, a folder one for its own files and
    // one for each subfolder that holds some.
    std::vector<Found> findCalendars()
    {
        std::vector<Found> found;
        const auto addFolder = [&](const QString& folder) {
            const QStringList files = icsFiles(QDir(folder));
            if (!files.isEmpty())
                found.push_back({{QStringLiteral("file:") + folder, {}, {}, folder}, files, folder});
        };
        for (const QString& path : m_paths) {
            const QFileInfo info(path);
            if (info.isFile()) {
                found.push_back({{QStringLiteral("file:") + path, {}, {}, path}, {path}, {}});
            } else if (info.isDir()) {
                addFolder(path);
                for (const QFileInfo& sub : QDir(path).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
                    addFolder(sub.absoluteFilePath());
            } else if (!m_missing.contains(path)) {
                calendarLine(QStringLiteral("Calendar source %1 is not there; it is read again when it appears.")
                                 .arg(path));
            }
        }
        m_missing.clear();
        for (const QString& path : m_paths)
            if (!QFileInfo::exists(path))
                m_missing.insert(path);
        return found;
    }

    const IcalCalendar* read(const QString& path)
    {
        const QFileInfo info(path);
        Parsed& parsed = m_parsed[path];
        if (parsed.modified == info.lastModified() && parsed.size == info.size())
            return parsed.calendar ? &*parsed.calendar : nullptr;
        parsed = {info.lastModified(), info.size(), std::nullopt};
        QFile file(path);
        QString error;
        if (!file.open(QIODevice::ReadOnly))
            error = file.errorString();
        else
            parsed.calendar = IcalCalendar::parse(file.readAll(), error);
        if (!parsed.calendar)
            calendarLine(QStringLiteral("Could not read %1: %2.").arg(path, error));
        else if (const int left = parsed.calendar->unreadableCount())
            calendarLine(QStringLiteral("Left out %1 of the events in %2: they have no readable start.")
                             .arg(left)
                             .arg(path));
        return parsed.calendar ? &*parsed.calendar : nullptr;
    }

    void rescan()
    {
        if (!m_from.isValid())
            return;
        std::map<QString, bool> stillThere;
        QStringList watched;
        for (Found& found : findCalendars()) {
            QList<CalendarEvent> events;
            QString name, color;
            for (const QString& file : found.files) {
                watched.append(file);
                if (const IcalCalendar* calendar = read(file)) {
                    events.append(calendar->occurrences(m_from, m_to));
                    name = name.isEmpty() ? calendar->name() : name;
                    color = color.isEmpty() ? calendar->color() : color;
                }
            }
            CalendarInfo& info = found.info;
            if (!found.folder.isEmpty()) {
                // A synchronised collection names itself beside its events.
                watched.append(found.folder);
                const QDir folder(found.folder);
                if (const QString own = firstLine(folder.filePath(QStringLiteral("displayname"))); !own.isEmpty())
                    name = own;
                if (const QString own = firstLine(folder.filePath(QStringLiteral("color"))); !own.isEmpty())
                    color = own.left(7);
            }
            if (name.isEmpty())
                name = found.folder.isEmpty() ? QFileInfo(found.files.first()).completeBaseName()
                                              : QFileInfo(found.folder).fileName();
            info.title = name;
            info.color = color.isEmpty() ? calendar::defaultColor(info.id) : color;
            stillThere[info.id] = true;
            auto& sent = m_sent[info.id];
            if (sent && sent->first == info && sent->second == events)
                continue;
            sent = std::make_pair(info, events);
            Q_EMIT calendarChanged(info, events);
        }
        for (auto it = m_sent.begin(); it != m_sent.end();) {
            if (stillThere.contains(it->first)) {
                ++it;
                continue;
            }
            Q_EMIT calendarRemoved(it->first);
            it = m_sent.erase(it);
        }
        // Parsed files of calendars that went away are let go.
        for (auto it = m_parsed.begin(); it != m_parsed.end();)
            it = watched.contains(it->first) ? std::next(it) : m_parsed.erase(it);
        // A listed path is watched where it is, and through its folder so that a file written
        // anew (saved by rename) or one that appears is seen too.
        for (const QString& path : m_paths) {
            watched.append(path);
            watched.append(QFileInfo(path).absolutePath());
            if (QFileInfo(path).isDir())
                for (const QFileInfo& sub : QDir(path).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
                    watched.append(sub.absoluteFilePath());
        }
        QStringList existing;
        for (const QString& path : watched)
            if (QFileInfo::exists(path) && !existing.contains(path))
                existing.append(path);
        const QStringList current = m_watcher.files() + m_watcher.directories();
        QStringList gone;
        for (const QString& path : current)
            if (!existing.contains(path))
                gone.append(path);
        if (!gone.isEmpty())
            m_watcher.removePaths(gone);
        QStringList added;
        for (const QString& path : existing)
            if (!current.contains(path))
                added.append(path);
        if (!added.isEmpty())
            m_watcher.addPaths(added);
    }

    QStringList m_paths;
    QDateTime m_from;
    QDateTime m_to;
    QFileSystemWatcher m_watcher{this};
    QTimer m_settle{this};
    std::map<QString, Parsed> m_parsed;
    std::map<QString, std::optional<std::pair<CalendarInfo, QList<CalendarEvent>>>> m_sent;
    QSet<QString> m_missing;
};

IcsCalendarSource::IcsCalendarSource(CalendarFileList& files, QObject* parent)
    : CalendarSource(parent)
    , m_worker(new IcsWorker)
{
    m_thread.setObjectName(QStringLiteral("calendar files"));
    m_worker->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    connect(m_worker, &IcsWorker::calendarChanged, this, &CalendarSource::calendarChanged, Qt::QueuedConnection);
    connect(m_worker, &IcsWorker::calendarRemoved, this, &CalendarSource::calendarRemoved, Qt::QueuedConnection);
    const auto follow = [this, &files] {
        QMetaObject::invokeMethod(m_worker,
                                  Handed([worker = m_worker, paths = files.paths()] { worker->setPaths(paths); }));
    };
    connect(&files, &CalendarFileList::pathsChanged, this, follow);
    m_thread.start();
    follow();
}

IcsCalendarSource::~IcsCalendarSource()
{
    m_thread.quit();
    m_thread.wait();
}

void IcsCalendarSource::setRange(const QDateTime& from, const QDateTime& to)
{
    QMetaObject::invokeMethod(m_worker, Handed([worker = m_worker, from, to] { worker->setRange(from, to); }));
}

} // namespace kelvane

#include "IcsCalendarSource.moc"
