#include "Tray.h"

#include "FileCopy.h"
#include "SavedTrayList.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/Clock.h"
#include "core/Log.h"
#include "core/MainThread.h"
#include "core/SavedFile.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QSaveFile>
#include <QSet>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent>

#include <algorithm>

namespace kelvane {

namespace {
constexpr double progressDelay = 0.5;
constexpr double progressInterval = 0.1;

void trayLine(const QString& message) { logLine(u"Tray", message); }

struct Made {
    QUrl url;
    std::optional<QUuid> stackID;
};

// Makes the files beside the main thread, read in parallel (pictures are the slow part) and each
// with its saved record ready, then hands them to the main thread, where they live. The reading
// has a pool of its own: the workers that ask for it run in the shared pool, and a map waiting
// there for threads of that same pool could wait for ever.
template <class Batch>
std::shared_ptr<Batch> makeFiles(const QList<Made>& made, const QDateTime& now, QThread* home)
{
    static QThreadPool readers;
    QList<QFuture<Handed<TrayFile*>>> reads;
    for (const Made& item : made)
        reads.append(QtConcurrent::run(&readers, Handed([item, now, home] {
            auto* file = new TrayFile(item.url, item.stackID, now, TrayFile::read(item.url));
            file->record();
            file->moveToThread(home);
            return Handed(file);
        })));
    auto batch = std::make_shared<Batch>();
    for (const auto& read : reads)
        batch->files.push_back(*read.result());
    return batch;
}

bool isInside(const QString& path, const QString& folder)
{
    return !folder.isEmpty() && path.startsWith(folder + QLatin1Char('/'));
}
} // namespace

Tray::Tray(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(std::move(dependencies))
{
    m_writer = std::make_unique<TrayStateWriter>();
    connect(&m_referenceWatch, &QFileSystemWatcher::fileChanged, this, [this] { scheduleUpdateFiles(); });
    m_deps.sharing.serviceChanged.set([this] { Q_EMIT sharingChanged(); });
    m_deps.previewer.availabilityChanged.set([this] { Q_EMIT previewChanged(); });
}

Tray::~Tray()
{
    m_deps.sharing.serviceChanged.set(nullptr);
    m_deps.previewer.availabilityChanged.set(nullptr);
    shutdown();
    m_folderMonitor.reset();
    qDeleteAll(m_files);
}

QString Tray::stateFile() const
{
    return m_deps.baseFolder.isEmpty() ? QString() : m_deps.baseFolder + QStringLiteral("/tray_state.json");
}

void Tray::setupTempDirectory()
{
    if (m_deps.baseFolder.isEmpty()) {
        trayLine(QStringLiteral("Could not locate Application Support directory"));
        m_trayFolder.clear();
        return;
    }
    const QString folder = m_deps.baseFolder + QStringLiteral("/TrayFiles");
    if (!QDir().mkpath(folder)) {
        trayLine(QStringLiteral("Failed to create tray directory: ") + folder + QStringLiteral(" could not be made"));
        m_trayFolder.clear();
        return;
    }
    m_trayFolder = QFileInfo(folder).canonicalFilePath();
}

void Tray::ensureTrayFolder()
{
    if (!m_trayFolder.isEmpty() && QFileInfo(m_trayFolder).isDir())
        return;
    setupTempDirectory();
    // A folder made again is a new folder: the old watch saw the last of the one that went.
    if (m_isMonitoring)
        watchTrayFolder();
}

void Tray::watchTrayFolder()
{
    m_folderMonitor.reset();
    if (m_trayFolder.isEmpty())
        return;
    QPointer<Tray> self(this);
    m_folderMonitor = std::make_unique<FolderMonitor>(m_trayFolder, [self] {
        QMetaObject::invokeMethod(self.data(), Handed([self] {
                                      if (self)
                                          self->scheduleUpdateFiles();
                                  }),
                                  Qt::QueuedConnection);
    });
}

void Tray::watchReferences()
{
    QSet<QString> wanted;
    for (const TrayFile* file : m_files)
        if (!isInside(file->path(), m_trayFolder))
            wanted.insert(file->path());
    const QStringList watched = m_referenceWatch.files();
    for (const QString& path : watched)
        if (!wanted.remove(path))
            m_referenceWatch.removePath(path);
    for (const QString& path : std::as_const(wanted))
        if (QFileInfo::exists(path))
            m_referenceWatch.addPath(path);
}

void Tray::scheduleUpdateFiles()
{
    // A burst of events (a file written in many steps) is one look at the files.
    if (std::exchange(m_updateQueued, true))
        return;
    QMetaObject::invokeMethod(this, [this] { m_updateQueued = false; updateFiles(); }, Qt::QueuedConnection);
}

// Saving and loading ---------------------------------------------------------------------------

void Tray::persist()
{
    if (stateFile().isEmpty())
        return;
    // The records are made with the files; encoding and writing happen beside the main thread.
    QJsonArray records;
    for (const TrayFile* file : m_files)
        records.append(file->record());
    m_writer->write(stateFile(), std::move(records));
}

void Tray::loadPersistedFiles()
{
    const QString path = stateFile();
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    // The load goes first in the queue of adds: nothing is saved until it is in, so the saved list
    // is never written over before it was read.
    m_adding = true;
    // A loaded file takes the time of loading and its name from the disk.
    const QDateTime now = m_deps.scheduler.clock().wallTime();
    QThread* home = thread();
    auto* watcher = new QFutureWatcher<Handed<LoadResult>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        finishLoad(*watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(Handed([path, now, home]() -> Handed<LoadResult> {
        LoadResult result;
        QFile in(path);
        const SavedTrayList saved =
            in.open(QIODevice::ReadOnly) ? SavedTrayList::read(in.readAll()) : SavedTrayList{{}, {}, in.errorString()};
        if (saved.error) {
            keepAside(path);
            trayLine(QStringLiteral("Failed to load tray state: %1 (kept as %2.broken)")
                         .arg(*saved.error, QFileInfo(path).fileName()));
            result.rewrite = true;
            return result;
        }
        QList<Made> present;
        for (const SavedTrayList::Entry& entry : saved.entries) {
            if (!QFileInfo::exists(entry.url.toLocalFile())) {
                trayLine(QStringLiteral("Dropping missing file from persisted state: ") +
                         TrayFile::fileName(entry.url));
                continue;
            }
            present.append({entry.url, entry.stackID});
        }
        const QStringList& bad = saved.rejected;
        if (!bad.isEmpty()) {
            keepAside(path);
            result.rewrite = true;
            trayLine(QStringLiteral("Failed to load tray state: left out %1, not a tray file (kept as %2.broken)")
                         .arg(bad.join(QStringLiteral(", ")), QFileInfo(path).fileName()));
        }
        result.batch = makeFiles<Batch>(present, now, home);
        return result;
    })));
}

std::vector<TrayFile*> Tray::adopt(const std::shared_ptr<Batch>& batch)
{
    std::vector<TrayFile*> files;
    if (!batch)
        return files;
    files = std::exchange(batch->files, {});
    for (TrayFile* file : files)
        file->setParent(this);
    return files;
}

void Tray::finishLoad(const LoadResult& result)
{
    if (m_shutDown)
        return;
    std::vector<TrayFile*> files = adopt(result.batch);
    files.insert(files.end(), m_files.begin(), m_files.end());
    m_adding = false;
    // What could not be read is kept aside: the list is written again with what could.
    if (!files.empty() || result.rewrite)
        setFiles(std::move(files));
    startNextAdd();
}

void Tray::shutdown()
{
    if (std::exchange(m_shutDown, true))
        return;
    m_pending.clear();
    m_progressTick.cancel();
    if (m_control && !m_addWork.isFinished()) {
        m_control->cancelled = true;
        // A copy stops within one step of a few megabytes; a source that does not answer at all
        // is left to the worker, which owns all it needs.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (!m_addWork.isFinished() && std::chrono::steady_clock::now() < deadline)
            QThread::msleep(5);
    }
    // What was copied by then is taken in and saved; an add left to its worker is let go.
    if (m_adding && m_control && m_addWork.isFinished())
        finishAdd(*m_addWork.result());
    m_adding = false;
    m_writer->flush(1000);
}

// Adding -----------------------------------------------------------------------------------------

QString Tray::freeDestination(const QString& trayFolder, const QString& name, const QSet<QString>& reserved)
{
    const QDir folder(trayFolder);
    const auto taken = [&](const QString& candidate) {
        const QString path = folder.filePath(candidate);
        return QFileInfo::exists(path) || QFileInfo(path).isSymLink() || reserved.contains(path);
    };
    if (!taken(name))
        return folder.filePath(name);
    const QString base = TrayFile::baseName(name);
    const QString extension = TrayFile::extension(name);
    for (int counter = 1;; ++counter) {
        QString candidate = base + QLatin1Char(' ') + QString::number(counter);
        if (!extension.isEmpty())
            candidate += QLatin1Char('.') + extension;
        if (!taken(candidate))
            return folder.filePath(candidate);
    }
}

void Tray::addFilesFromURLs(const QList<QUrl>& urls, std::function<void(int)> done, std::shared_ptr<StagedDrop> staged)
{
    assertMainThread();
    if (m_shutDown)
        return;
    m_pending.push_back({urls, std::move(done), std::move(staged)});
    startNextAdd();
}

namespace {
// Where the tray keeps a file: inside the tray folder is a file the tray already has, whatever
// the way it is named (the folder holding it is what counts, so that a link elsewhere that
// points into the tray folder is copied like any other file).
bool heldByTheTray(const QString& path, const QString& trayFolder)
{
    const QFileInfo info(path);
    return isInside(path, trayFolder) ||
           isInside(QFileInfo(info.absolutePath()).canonicalFilePath() + QLatin1Char('/') + info.fileName(), trayFolder);
}
} // namespace

void Tray::startNextAdd()
{
    if (m_adding || m_pending.empty() || m_shutDown)
        return;
    m_adding = true;
    m_current = std::move(m_pending.front());
    m_pending.pop_front();
    ensureTrayFolder();


    m_control = std::make_shared<CopyControl>();
    m_bytesToCopy = std::make_shared<std::atomic<qint64>>(0);
    const QDateTime now = m_deps.scheduler.clock().wallTime();
    QThread* home = thread();
    m_progressTick = m_deps.scheduler.schedule(secondsToDelay(progressDelay), [this] { progressTick(); });

    auto* watcher = new QFutureWatcher<Handed<AddResult>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (m_adding && !m_shutDown)
            finishAdd(*watcher->result());
    });
    m_addWork = QtConcurrent::run(Handed([urls = m_current.urls, trayFolder = m_trayFolder, control = m_control,
                                          total = m_bytesToCopy, now, home]() -> Handed<AddResult> {
        // Destinations are chosen by the worker: adds run one at a time, so two never pick the
        // same name, and the main thread never waits on the disk for them.
        struct Step {
            QString source;
            QString destination; // empty: the source itself is held
        };
        std::vector<Step> steps;
        QSet<QString> reserved;
        for (const QUrl& url : urls) {
            const QString path = QDir::cleanPath(QFileInfo(url.toLocalFile()).absoluteFilePath());
            Step step{path, {}};
            if (!trayFolder.isEmpty() && !heldByTheTray(path, trayFolder)) {
                step.destination = freeDestination(trayFolder, TrayFile::fileName(QUrl::fromLocalFile(path)), reserved);
                reserved.insert(step.destination);
            }
            steps.push_back(step);
        }
        for (const Step& step : steps)
            if (!step.destination.isEmpty())
                *total += itemSize(step.source);
        std::vector<QUrl> held;
        for (const Step& step : steps) {
            if (control->cancelled)
                break;
            if (step.destination.isEmpty()) {
                held.push_back(QUrl::fromLocalFile(step.source));
                continue;
            }
            const QFileInfo info(step.source);
            if (!info.isFile() && !info.isDir()) {
                logLine(u"Tray", QStringLiteral("Refused %1: it is neither a regular file nor a folder.").arg(info.fileName()));
                continue;
            }
            const auto error = copyItem(step.source, step.destination, control.get());
            if (!error) {
                held.push_back(QUrl::fromLocalFile(step.destination));
            } else if (!control->cancelled) {
                logLine(u"Tray", QStringLiteral("Failed to copy %1 into tray dir: %2. Using original reference.")
                                     .arg(info.fileName(), *error));
                held.push_back(QUrl::fromLocalFile(step.source));
            }
        }
        // Several files added together are one stack.
        const std::optional<QUuid> stackID = held.size() > 1 ? std::optional(QUuid::createUuid()) : std::nullopt;
        QList<Made> made;
        for (const QUrl& url : held)
            made.append({url, stackID});
        return AddResult{makeFiles<Batch>(made, now, home)};
    }));
    watcher->setFuture(m_addWork);
}

void Tray::finishAdd(const AddResult& result)
{
    m_progressTick.cancel();
    setProgress(false, 0);
    const std::vector<TrayFile*> added = adopt(result.batch);
    std::vector<TrayFile*> files = m_files;
    files.insert(files.end(), added.begin(), added.end());
    if (!added.empty())
        setFiles(std::move(files));
    m_adding = false;
    m_control.reset();
    // What the add read from may go now: the copies are in the tray folder.
    PendingAdd finished = std::exchange(m_current, {});
    if (finished.staged && std::none_of(m_files.begin(), m_files.end(), [&](const TrayFile* file) {
            return isInside(file->path(), finished.staged->folder());
        }))
        finished.staged->removeWhenReleased();
    finished.staged.reset();
    if (finished.done)
        finished.done(static_cast<int>(added.size()));
    Q_EMIT filesAdded(static_cast<int>(added.size()));
    startNextAdd();
}

void Tray::progressTick()
{
    const qint64 total = m_bytesToCopy ? m_bytesToCopy->load() : 0;
    setProgress(true, total > 0 && m_control ? double(m_control->copiedBytes.load()) / double(total) : 0);
    m_progressTick = m_deps.scheduler.schedule(secondsToDelay(progressInterval), [this] { progressTick(); });
}

void Tray::setProgress(bool shows, double progress)
{
    if (shows == m_showsProgress && qFuzzyCompare(progress + 1, m_copyProgress + 1))
        return;
    m_showsProgress = shows;
    m_copyProgress = progress;
    Q_EMIT progressChanged();
}

// The list and what follows its changes -------------------------------------------------------

void Tray::setFiles(std::vector<TrayFile*> files)
{
    QHash<const TrayFile*, int> position;
    position.reserve(qsizetype(files.size()));
    for (std::size_t i = 0; i < files.size(); ++i)
        position.insert(files[i], int(i));
    std::vector<TrayFile*> gone;
    for (TrayFile* file : m_files)
        if (!position.contains(file))
            gone.push_back(file);

    std::vector<TrayFile*> selection;
    for (TrayFile* file : m_selectedFiles)
        if (position.contains(file))
            selection.push_back(file);
    // The ends of a selection follow their files; an end whose file went is forgotten.
    const auto follow = [&](std::optional<int> index) -> std::optional<int> {
        if (!index || *index < 0 || *index >= count())
            return std::nullopt;
        const auto at = position.constFind(m_files[std::size_t(*index)]);
        return at == position.cend() ? std::nullopt : std::optional(*at);
    };
    m_baseFileIndex = follow(m_baseFileIndex);
    m_lastSelectedIndex = follow(m_lastSelectedIndex);
    if (!m_lastSelectedIndex)
        m_lastSelectedIndex = m_baseFileIndex;
    if (m_editing && !position.contains(m_editing->file))
        cancelEditing();
    if (m_previewing) {
        std::vector<TrayFile*> previewed;
        for (TrayFile* file : m_previewFiles)
            if (position.contains(file))
                previewed.push_back(file);
        if (previewed.size() != m_previewFiles.size()) {
            m_previewFiles = std::move(previewed);
            m_previewing = !m_previewFiles.empty();
            Q_EMIT previewChanged();
        }
    }
    if (files.empty())
        m_deps.liveActivities.removeSync(LiveActivity::tray);
    else
        m_deps.liveActivities.insertSync(LiveActivity::tray);

    m_files = std::move(files);
    setSelection(std::move(selection));
    Q_EMIT filesChanged();
    for (TrayFile* file : gone)
        file->deleteLater();

    if (!m_files.empty() && !m_isMonitoring) {
        setupTempDirectory();
        watchTrayFolder();
        m_isMonitoring = true;
    } else if (m_files.empty() && m_isMonitoring) {
        m_folderMonitor.reset();
        m_isMonitoring = false;
    }
    watchReferences();
    persist();
}

void Tray::removeFile(TrayFile* file)
{
    const int index = indexOf(file);
    if (index < 0)
        return;
    // The copy stays on disk: only the list lets go of it.
    std::vector<TrayFile*> files = m_files;
    files.erase(files.begin() + index);
    setFiles(std::move(files));
    // Staged drops that an add still reads from are held, and left.
    if (m_files.empty())
        m_deps.staging.cleanup();
}

void Tray::removeSelectedFiles()
{
    const std::vector<TrayFile*> selection = m_selectedFiles;
    for (TrayFile* file : selection)
        removeFile(file);
}

TrayFile* Tray::fileWithId(const QString& id) const
{
    const auto it = std::find_if(m_files.begin(), m_files.end(), [&](const TrayFile* f) { return f->idText() == id; });
    return it == m_files.end() ? nullptr : *it;
}

int Tray::indexOf(const TrayFile* file) const
{
    const auto it = std::find(m_files.begin(), m_files.end(), file);
    return it == m_files.end() ? -1 : static_cast<int>(it - m_files.begin());
}

void Tray::updateFiles()
{
    // Writing the saved list again only when a file moved: most folder events are the tray's own.
    std::vector<TrayFile*> kept;
    bool followed = false;
    for (TrayFile* file : m_files) {
        if (QFileInfo::exists(file->path())) {
            kept.push_back(file);
        } else if (file->updateFileName()) {
            kept.push_back(file);
            followed = true;
        } else if (const auto found = findExistingFile(file->url())) {
            file->updateData(*found);
            kept.push_back(file);
            followed = true;
        }
    }
    if (kept != m_files) {
        setFiles(std::move(kept));
    } else if (followed) {
        watchReferences();
        persist();
    }
}

std::optional<QUrl> Tray::findExistingFile(const QUrl& url) const
{
    const QFileInfo info(url.toLocalFile());
    const QDir folder = info.dir();
    const QStringList entries = folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (entries.contains(info.fileName()))
        return QUrl::fromLocalFile(folder.filePath(info.fileName()));
    const QString base = TrayFile::baseName(info.fileName());
    for (const QString& entry : entries)
        if (TrayFile::baseName(entry) == base)
            return QUrl::fromLocalFile(folder.filePath(entry));
    return std::nullopt;
}

// Layout -------------------------------------------------------------------------------------

std::vector<Tray::Item> Tray::trayItems() const
{
    std::vector<Item> items;
    // Where each stack's item stands, from its first file on.
    QHash<QUuid, std::size_t> stacks;
    for (TrayFile* file : m_files) {
        if (!file->stackID()) {
            items.push_back({file->id(), false, {file}});
            continue;
        }
        const QUuid stack = *file->stackID();
        if (const auto at = stacks.constFind(stack); at != stacks.cend()) {
            items[*at].files.push_back(file);
            continue;
        }
        stacks.insert(stack, items.size());
        items.push_back({stack, true, {file}});
    }
    return items;
}

QString Tray::stackName(const std::vector<TrayFile*>& files)
{
    const QString separator = QStringLiteral(" \u00B7 ");
    const auto n = QString::number(files.size());
    if (files.empty())
        return QStringLiteral("0 files");
    const QString extension = TrayFile::extension(files.front()->name());
    if (std::all_of(files.begin(), files.end(),
                    [&](const TrayFile* f) { return TrayFile::extension(f->name()) == extension; }) &&
        !extension.isEmpty())
        return extension.toUpper() + QStringLiteral("s") + separator + n;
    const QString parent = QFileInfo(files.front()->path()).dir().path();
    const QString folderName = QFileInfo(parent).fileName();
    if (std::all_of(files.begin(), files.end(),
                    [&](const TrayFile* f) { return QFileInfo(f->path()).dir().path() == parent; }) &&
        !folderName.isEmpty() && parent != QLatin1String("/"))
        return folderName + separator + n;
    return n + QStringLiteral(" files");
}

QVariantList Tray::itemsForView() const
{
    QVariantList items;
    for (const Item& item : trayItems()) {
        QVariantList files;
        for (TrayFile* file : item.files)
            files.append(QVariant::fromValue(static_cast<QObject*>(file)));
        items.append(QVariantMap{{QStringLiteral("id"), item.id.toString(QUuid::WithoutBraces)},
                                 {QStringLiteral("isStack"), item.isStack},
                                 {QStringLiteral("title"), item.isStack ? stackName(item.files) : item.files[0]->name()},
                                 {QStringLiteral("files"), files}});
    }
    return items;
}

// Selection and keys ---------------------------------------------------------------------------

void Tray::setSelection(std::vector<TrayFile*> selection)
{
    if (selection == m_selectedFiles)
        return;
    m_selectedFiles = std::move(selection);
    Q_EMIT selectionChanged();
}

QStringList Tray::selectedIds() const
{
    QStringList ids;
    for (const TrayFile* file : m_selectedFiles)
        ids.append(file->idText());
    return ids;
}

void Tray::selectRange(int from, int to)
{
    std::vector<TrayFile*> selection;
    const int last = count() - 1;
    for (int i = std::clamp(std::min(from, to), 0, last); i <= std::clamp(std::max(from, to), 0, last); ++i)
        selection.push_back(m_files[std::size_t(i)]);
    setSelection(std::move(selection));
}

void Tray::selectFile(TrayFile* file, TrayModifiers modifiers)
{
    const int index = indexOf(file);
    if (index < 0) {
        setSelection({});
        return;
    }
    if (modifiers.shift) {
        if (!m_baseFileIndex)
            m_baseFileIndex = index;
        m_lastSelectedIndex = index;
        selectRange(*m_baseFileIndex, index);
    } else if (modifiers.command) {
        std::vector<TrayFile*> selection = m_selectedFiles;
        if (const auto it = std::find(selection.begin(), selection.end(), file); it != selection.end())
            selection.erase(it);
        else
            selection.push_back(file);
        setSelection(std::move(selection));
    } else {
        m_baseFileIndex = m_lastSelectedIndex = index;
        setSelection({file});
    }
}

void Tray::selectFileWithId(const QString& id, bool shift, bool command) { selectFile(fileWithId(id), {shift, command}); }

void Tray::selectAdjacentFile(int direction)
{
    if (m_files.empty())
        return;
    const int last = count() - 1;
    const int index = m_lastSelectedIndex ? std::clamp(*m_lastSelectedIndex + direction, 0, last)
                                          : (direction > 0 ? 0 : last);
    m_baseFileIndex = m_lastSelectedIndex = index;
    setSelection({m_files[std::size_t(index)]});
}

void Tray::handleShiftArrowSelection(int direction)
{
    if (m_files.empty())
        return;
    const int last = count() - 1;
    if (!m_lastSelectedIndex) {
        selectAdjacentFile(direction);
        return;
    }
    if (!m_baseFileIndex)
        m_baseFileIndex = m_lastSelectedIndex;
    m_lastSelectedIndex = std::clamp(*m_lastSelectedIndex + direction, 0, last);
    selectRange(*m_baseFileIndex, *m_lastSelectedIndex);
}

void Tray::selectAll()
{
    if (m_files.empty())
        return;
    m_baseFileIndex = 0;
    m_lastSelectedIndex = count() - 1;
    setSelection(m_files);
}

bool Tray::handleKey(TrayKey key, TrayModifiers modifiers)
{
    if (m_files.empty())
        return false;
    if (m_editing && m_selectedFiles.size() == 1) {
        if (key == TrayKey::returnKey) {
            rename();
            return true;
        }
        if (key == TrayKey::escape) {
            cancelEditing();
            return true;
        }
        return false;
    }
    if (key == TrayKey::escape && m_previewing) {
        closePreview();
        return true;
    }
    switch (key) {
    case TrayKey::c:
        if (modifiers.command)
            copySelectedFilesToClipboard();
        return modifiers.command;
    case TrayKey::a:
        if (modifiers.command)
            selectAll();
        return modifiers.command;
    case TrayKey::v:
        if (modifiers.command)
            pasteFromClipboard();
        return modifiers.command;
    case TrayKey::space:
        toggleQuickLookState();
        return true;
    case TrayKey::left:
    case TrayKey::right: {
        const int direction = key == TrayKey::left ? -1 : 1;
        if (modifiers.shift)
            handleShiftArrowSelection(direction);
        else
            selectAdjacentFile(direction);
        return true;
    }
    case TrayKey::deleteKey:
        removeSelectedFiles();
        return true;
    default:
        return false;
    }
}

bool Tray::handleKeyNamed(const QString& key, bool shift, bool command)
{
    static const QHash<QString, TrayKey> keys{
        {QStringLiteral("c"), TrayKey::c},          {QStringLiteral("a"), TrayKey::a},
        {QStringLiteral("v"), TrayKey::v},          {QStringLiteral("space"), TrayKey::space},
        {QStringLiteral("left"), TrayKey::left},    {QStringLiteral("right"), TrayKey::right},
        {QStringLiteral("delete"), TrayKey::deleteKey}, {QStringLiteral("return"), TrayKey::returnKey},
        {QStringLiteral("escape"), TrayKey::escape}};
    return handleKey(keys.value(key, TrayKey::other), {shift, command});
}

// Clipboard, sharing, preview and renaming -----------------------------------------------------

namespace {
QList<QUrl> urlsOf(const std::vector<TrayFile*>& files)
{
    QList<QUrl> urls;
    for (const TrayFile* file : files)
        urls.append(file->url());
    return urls;
}
} // namespace

void Tray::copySelectedFilesToClipboard() { m_deps.pasteboard.writeFileURLs(urlsOf(m_selectedFiles)); }

void Tray::airdropSelectedFiles() { airDropItems(urlsOf(m_selectedFiles), m_deps.sharing); }

void Tray::toggleQuickLookState()
{
    if (m_previewing) {
        closePreview();
        return;
    }
    if (m_selectedFiles.empty())
        return;
    m_previewing = true;
    m_previewFiles = m_selectedFiles;
    Q_EMIT previewChanged();
}

void Tray::closePreview()
{
    if (!m_previewing)
        return;
    m_previewing = false;
    m_previewFiles.clear();
    Q_EMIT previewChanged();
}

void Tray::openInDesktopPreviewer(const QString& id)
{
    if (const TrayFile* file = fileWithId(id))
        m_deps.previewer.toggle({file->url()});
}

QString Tray::previewText(const QString& path, int bytes)
{
    // Only a regular file is opened; a pipe would never answer.
    if (!QFileInfo(path).isFile())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromUtf8(file.read(bytes));
    // A character cut in two at the end is not shown.
    if (!text.isEmpty() && text.back() == QChar::ReplacementCharacter)
        text.chop(1);
    return text;
}

QVariantList Tray::previewFilesForView() const
{
    QVariantList files;
    for (TrayFile* file : m_previewFiles)
        files.append(QVariant::fromValue(static_cast<QObject*>(file)));
    return files;
}

void Tray::pasteFromClipboard(std::function<void(int)> done)
{
    const Pasteboard& pasteboard = m_deps.pasteboard;
    if (const QList<QUrl> files = pasteboard.fileURLs(); !files.isEmpty()) {
        addFilesFromURLs(files, std::move(done));
        return;
    }
    if (const QImage image = pasteboard.image(); !image.isNull()) {
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        writePasted(png, QStringLiteral("png"), QStringLiteral("image"), std::move(done));
        return;
    }
    if (const auto text = pasteboard.string(PasteboardType::plainText)) {
        writePasted(text->toUtf8(), QStringLiteral("txt"), QStringLiteral("text"), std::move(done));
        return;
    }
    trayLine(QStringLiteral("Paste: pasteboard contained nothing usable."));
    if (done)
        done(0);
}

void Tray::writePasted(const QByteArray& data, const QString& extension, const QString& what,
                       std::function<void(int)> done)
{
    const auto failed = [&](const QString& why) {
        trayLine(QStringLiteral("Failed to write pasted %1: ").arg(what) + why);
        if (done)
            done(0);
    };
    if (m_trayFolder.isEmpty())
        setupTempDirectory();
    if (m_trayFolder.isEmpty()) {
        failed(QStringLiteral("there is no tray folder"));
        return;
    }
    const QString path =
        QDir(m_trayFolder).filePath(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + QLatin1Char('.') + extension);
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(data) < 0 || !out.commit()) {
        failed(out.errorString());
        return;
    }
    addFilesFromURLs({QUrl::fromLocalFile(path)}, std::move(done));
}

void Tray::beginEditing(const QString& id)
{
    TrayFile* file = fileWithId(id);
    if (!file)
        return;
    m_editing = Editing{file, TrayFile::baseName(file->name())};
    Q_EMIT editingChanged();
}

void Tray::setEditingName(const QString& name)
{
    if (m_editing)
        m_editing->newName = name;
}

void Tray::cancelEditing()
{
    if (!m_editing)
        return;
    m_editing.reset();
    Q_EMIT editingChanged();
}

void Tray::rename()
{
    if (!m_editing)
        return;
    const Editing editing = *m_editing;
    cancelEditing();
    if (editing.file->rename(editing.newName))
        persist();
}

} // namespace kelvane
