#include "Tray.h"

#include "FileCopy.h"
#include "TemporaryFiles.h"

#include "activities/ActiveLiveActivitiesManager.h"
#include "core/Clock.h"
#include "core/Log.h"
#include "core/MainThread.h"

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
#include <QtConcurrent>

#include <algorithm>

namespace kelvane {

namespace {
constexpr double progressDelay = 0.5;
constexpr double progressInterval = 0.1;

void trayLine(const QString& message) { logLine(u"Tray", message); }

bool isInside(const QString& path, const QString& folder)
{
    return !folder.isEmpty() && path.startsWith(folder + QLatin1Char('/'));
}
} // namespace

Tray::Tray(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(std::move(dependencies))
{
}

Tray::~Tray()
{
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

// Saving and loading ---------------------------------------------------------------------------

void Tray::persist()
{
    if (stateFile().isEmpty())
        return;
    QJsonArray records;
    for (const TrayFile* file : m_files) {
        QJsonObject record{{QStringLiteral("url"), file->url().toString(QUrl::FullyEncoded)},
                           {QStringLiteral("addedAt"), file->addedAt().toUTC().toString(Qt::ISODate)},
                           {QStringLiteral("originalName"), file->name()}};
        if (file->stackID())
            record.insert(QStringLiteral("stackID"), file->stackID()->toString(QUuid::WithoutBraces).toUpper());
        records.append(record);
    }
    QSaveFile out(stateFile());
    if (!out.open(QIODevice::WriteOnly) || out.write(QJsonDocument(records).toJson(QJsonDocument::Compact)) < 0 ||
        !out.commit())
        trayLine(QStringLiteral("Failed to persist tray state: ") + out.errorString());
}

void Tray::loadPersistedFiles()
{
    const QString path = stateFile();
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    QFile in(path);
    QJsonParseError parseError{};
    const QJsonDocument document =
        in.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(in.readAll(), &parseError) : QJsonDocument();
    if (!document.isArray()) {
        const QString why = !in.isOpen() ? in.errorString()
                            : parseError.error != QJsonParseError::NoError ? parseError.errorString()
                                                                           : QStringLiteral("not a list of files");
        trayLine(QStringLiteral("Failed to load tray state: ") + why);
        return;
    }
    // Every record is checked before any is taken: one that cannot be read spoils the whole list,
    // as a list that does not decode does.
    struct Record {
        QUrl url;
        std::optional<QUuid> stackID;
    };
    std::vector<Record> records;
    for (const QJsonValue& value : document.array()) {
        const QJsonObject object = value.toObject();
        const QUrl url(object.value(QStringLiteral("url")).toString(), QUrl::StrictMode);
        const QJsonValue stack = object.value(QStringLiteral("stackID"));
        const QUuid stackID = QUuid::fromString(stack.toString());
        if (!value.isObject() || !url.isValid() || !url.isLocalFile() ||
            !QDateTime::fromString(object.value(QStringLiteral("addedAt")).toString(), Qt::ISODate).isValid() ||
            !object.value(QStringLiteral("originalName")).isString() ||
            (!stack.isUndefined() && stackID.isNull())) {
            trayLine(QStringLiteral("Failed to load tray state: a record is not a tray file"));
            return;
        }
        records.push_back({url, stack.isUndefined() ? std::nullopt : std::optional(stackID)});
    }
    std::vector<Record> present;
    for (const Record& record : records) {
        if (!QFileInfo::exists(record.url.toLocalFile())) {
            trayLine(QStringLiteral("Dropping missing file from persisted state: ") + record.url.fileName());
            continue;
        }
        present.push_back(record);
    }
    const QList<TrayFile::Contents> contents = QtConcurrent::blockingMapped(
        QList<Record>(present.begin(), present.end()), [](const Record& record) { return TrayFile::read(record.url); });
    // A loaded file takes the time of loading and its name from the disk.
    const QDateTime now = m_deps.scheduler.clock().wallTime();
    std::vector<TrayFile*> files;
    for (std::size_t i = 0; i < present.size(); ++i)
        files.push_back(new TrayFile(present[i].url, present[i].stackID, now, contents[qsizetype(i)], this));
    setFiles(std::move(files));
}

// Adding -----------------------------------------------------------------------------------------

QString Tray::freeDestination(const QString& name, const QSet<QString>& reserved) const
{
    const QDir folder(m_trayFolder);
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

void Tray::addFilesFromURLs(const QList<QUrl>& urls, std::function<void(int)> done)
{
    assertMainThread();
    m_pending.push_back({urls, std::move(done)});
    startNextAdd();
}

void Tray::startNextAdd()
{
    if (m_adding || m_pending.empty())
        return;
    m_adding = true;
    const QList<QUrl> urls = m_pending.front().urls;
    m_addDone = std::move(m_pending.front().done);
    m_pending.pop_front();

    // Destinations are chosen here, one add at a time, so two adds never pick the same name.
    struct Step {
        QUrl source;
        QString destination; // empty: the source itself is held
    };
    std::vector<Step> steps;
    QSet<QString> reserved;
    for (const QUrl& url : urls) {
        const QString path = QFileInfo(url.toLocalFile()).absoluteFilePath();
        Step step{QUrl::fromLocalFile(path), {}};
        if (!m_trayFolder.isEmpty() && !isInside(path, m_trayFolder) && !isInside(QFileInfo(path).canonicalFilePath(), m_trayFolder)) {
            step.destination = freeDestination(url.fileName(), reserved);
            reserved.insert(step.destination);
        }
        steps.push_back(step);
    }

    m_copiedBytes = std::make_shared<std::atomic<qint64>>(0);
    m_bytesToCopy = 0;
    m_progressTick = m_deps.scheduler.schedule(secondsToDelay(progressDelay), [this] { progressTick(); });

    auto copied = m_copiedBytes;
    auto* watcher = new QFutureWatcher<std::pair<std::vector<QUrl>, std::vector<TrayFile::Contents>>>(this);
    QPointer<Tray> self(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        watcher->deleteLater();
        const auto result = watcher->result();
        finishAdd(result.first, result.second);
    });
    watcher->setFuture(QtConcurrent::run([steps, copied, self]() {
        qint64 total = 0;
        for (const Step& step : steps)
            if (!step.destination.isEmpty())
                total += itemSize(step.source.toLocalFile());
        if (self)
            QMetaObject::invokeMethod(self.data(), [self, total] { if (self) self->m_bytesToCopy = total; });
        std::vector<QUrl> held;
        for (const Step& step : steps) {
            if (step.destination.isEmpty()) {
                held.push_back(step.source);
                continue;
            }
            if (const auto error = copyItem(step.source.toLocalFile(), step.destination, copied.get())) {
                logLine(u"Tray", QStringLiteral("Failed to copy %1 into tray dir: %2. Using original reference.")
                                     .arg(step.source.fileName(), *error));
                held.push_back(step.source);
            } else {
                held.push_back(QUrl::fromLocalFile(step.destination));
            }
        }
        const QList<TrayFile::Contents> contents = QtConcurrent::blockingMapped(
            QList<QUrl>(held.begin(), held.end()), [](const QUrl& url) { return TrayFile::read(url); });
        return std::pair(held, std::vector<TrayFile::Contents>(contents.begin(), contents.end()));
    }));
}

void Tray::finishAdd(const std::vector<QUrl>& urls, const std::vector<TrayFile::Contents>& contents)
{
    m_progressTick.cancel();
    setProgress(false, 0);
    const std::optional<QUuid> stackID = urls.size() > 1 ? std::optional(QUuid::createUuid()) : std::nullopt;
    const QDateTime now = m_deps.scheduler.clock().wallTime();
    std::vector<TrayFile*> files = m_files;
    for (std::size_t i = 0; i < urls.size(); ++i)
        files.push_back(new TrayFile(urls[i], stackID, now, contents[i], this));
    setFiles(std::move(files));
    m_adding = false;
    if (const auto done = std::exchange(m_addDone, nullptr))
        done(static_cast<int>(urls.size()));
    Q_EMIT filesAdded(static_cast<int>(urls.size()));
    startNextAdd();
}

void Tray::progressTick()
{
    setProgress(true, m_bytesToCopy > 0 ? double(m_copiedBytes->load()) / double(m_bytesToCopy) : 0);
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
    std::vector<TrayFile*> gone;
    for (TrayFile* file : m_files)
        if (std::find(files.begin(), files.end(), file) == files.end())
            gone.push_back(file);

    std::vector<TrayFile*> selection;
    for (TrayFile* file : m_selectedFiles)
        if (std::find(files.begin(), files.end(), file) != files.end())
            selection.push_back(file);
    if (m_editing && std::find(files.begin(), files.end(), m_editing->file) == files.end())
        cancelEditing();
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
        if (!m_trayFolder.isEmpty()) {
            QPointer<Tray> self(this);
            m_folderMonitor = std::make_unique<FolderMonitor>(m_trayFolder, [self] {
                QMetaObject::invokeMethod(self.data(), [self] { if (self) self->updateFiles(); }, Qt::QueuedConnection);
            });
        }
        m_isMonitoring = true;
    } else if (m_files.empty() && m_isMonitoring) {
        m_folderMonitor.reset();
        m_isMonitoring = false;
    }
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
    if (m_files.empty())
        cleanupTemporaryDirectory();
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
    if (kept != m_files)
        setFiles(std::move(kept));
    else if (followed)
        persist();
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
    QSet<QUuid> emitted;
    for (TrayFile* file : m_files) {
        if (!file->stackID()) {
            items.push_back({file->id(), false, {file}});
            continue;
        }
        const QUuid stack = *file->stackID();
        if (emitted.contains(stack))
            continue;
        emitted.insert(stack);
        Item item{stack, true, {}};
        for (TrayFile* member : m_files)
            if (member->stackID() == stack)
                item.files.push_back(member);
        items.push_back(std::move(item));
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
    for (int i = std::min(from, to); i <= std::max(from, to); ++i)
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

void Tray::toggleQuickLookState() { m_deps.previewer.toggle(urlsOf(m_selectedFiles)); }

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
