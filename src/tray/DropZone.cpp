#include "DropZone.h"

#include "FileCopy.h"
#include "StagingArea.h"
#include "Tray.h"

#include "core/HandOff.h"
#include "core/Log.h"
#include "core/MainThread.h"

#include <QDir>
#include <QJsonArray>
#include <QFileInfo>
#include <QPointer>
#include <QFutureWatcher>
#include <QSaveFile>
#include <QtConcurrent>

#include <unistd.h>

namespace kelvane {

namespace {
// Leaving the drop area settles without overshoot.
constexpr Spring finishSpring{0.4, 1.0, 0.0};

bool isInside(const QString& path, const QString& folder)
{
    return !folder.isEmpty() && path.startsWith(folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/'));
}

// A web address rather than text that happens to contain a colon: a scheme, no white space, and
// a host (or a mail address).
bool isWebAddress(const QString& text)
{
    if (text.isEmpty() || std::any_of(text.begin(), text.end(), [](QChar c) { return c.isSpace(); }))
        return false;
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.scheme().isEmpty() &&
           (!url.host().isEmpty() || url.scheme() == QLatin1StringView("mailto"));
}

std::optional<QString> writeFile(const QString& path, const QByteArray& contents)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size() || !file.commit())
        return file.errorString();
    return std::nullopt;
}

QByteArray weblocPropertyList(const QString& address)
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                             "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                             "<plist version=\"1.0\">\n<dict>\n\t<key>URL</key>\n\t<string>") +
           address.toHtmlEscaped().toUtf8() + QByteArrayLiteral("</string>\n</dict>\n</plist>\n");
}

} // namespace

DropZone::DropZone(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_general(dependencies.settings, Keys::generalSettings(), this)
{
}

bool DropZone::canTake(const QStringList& types)
{
    static const QStringList taken{PasteboardType::fileURL,   PasteboardType::url,          PasteboardType::legacyURL,
                                   PasteboardType::appleURL,  PasteboardType::plainText,    PasteboardType::legacyString,
                                   PasteboardType::filePromise};
    return std::any_of(types.begin(), types.end(), [](const QString& type) { return taken.contains(type); });
}

bool DropZone::viewEntered(const QRectF& viewOnDesktop, const Pasteboard& pasteboard)
{
    if (!canTake(pasteboard.types()))
        return false;
    m_exitTimer.cancel();
    m_boundary.include(viewOnDesktop);
    dropEntered(pasteboard);
    return !m_dropsSuppressed;
}

void DropZone::viewUpdated(const QRectF& viewOnDesktop, const QPointF& location)
{
    m_exitTimer.cancel();
    m_boundary.include(viewOnDesktop);
    dropUpdated(location);
}

void DropZone::viewExited(const QRectF& viewOnDesktop)
{
    m_boundary.include(viewOnDesktop);
    m_exitTimer = m_deps.scheduler.schedule(exitPollInterval, [this] { pollExit(); });
}

void DropZone::pollExit()
{
    if (m_deps.pointer.leftButtonDown() && m_boundary.contains(m_deps.pointer.position(), exitMargin)) {
        m_exitTimer = m_deps.scheduler.schedule(exitPollInterval, [this] { pollExit(); });
        return;
    }
    dropExited();
}

bool DropZone::viewPerformed(const Pasteboard& pasteboard)
{
    m_exitTimer.cancel();
    return performDrop(pasteboard);
}

void DropZone::dropEntered(const Pasteboard& pasteboard)
{
    assertMainThread();
    if (m_dropsSuppressed)
        return;
    m_deps.kelvane.setMode(KelvaneState::Mode::dragging,
                           m_general->transluscent ? Springs::liquidOpenFootprint : Springs::animation);
    setAvailableActions(offeredPipelines(allPipelines(m_deps.sharing), pasteboard.types()));
}

void DropZone::dropUpdated(const QPointF& location)
{
    if (m_droppingCoords != location) {
        m_droppingCoords = location;
        Q_EMIT droppingCoordsChanged();
    }
    // Where targets overlap, the tray wins, then the pipelines in their order.
    QStringList shown{trayTargetID};
    for (const Pipeline& pipeline : m_availableActions)
        shown << pipeline.id;
    std::optional<QString> hovered;
    for (const QString& id : shown) {
        const auto rect = m_targetsCoords.constFind(id);
        if (rect != m_targetsCoords.cend() && rect->contains(location)) {
            hovered = id;
            break;
        }
    }
    setHovered(hovered);
}

void DropZone::dropExited()
{
    m_exitTimer.cancel();
    if (m_deps.kelvane.mode() != KelvaneState::Mode::dragging) {
        finishDragging(m_deps.kelvane.mode() == KelvaneState::Mode::closed);
        return;
    }
    finishDragging(m_deps.tray.count() == 0);
}

bool DropZone::performDrop(const Pasteboard& pasteboard)
{
    assertMainThread();
    if (m_dropsSuppressed)
        return false;

    const Pipeline* pipeline = nullptr;
    if (m_hoveredDropTargetID && *m_hoveredDropTargetID != trayTargetID) {
        for (const Pipeline& candidate : allPipelines(m_deps.sharing))
            if (candidate.id == *m_hoveredDropTargetID) {
                pipeline = &candidate;
                break;
            }
    }
    const QRectF targetRect = pipeline ? m_targetsCoords.value(pipeline->id) : QRectF();
    // After a pipeline the notch shows the tray when it holds files, as after a drag that left.
    const bool closeAfter = pipeline && m_deps.tray.count() == 0;

    // Each drop stages into a folder of its own, which lives as long as its add or its pipeline
    // needs it: a second drop, the tray emptied or another pipeline never takes it away.
    const std::shared_ptr<StagedDrop> drop = m_deps.staging.newDrop();
    const QString folder = drop ? drop->folder() : QString();
    if (drop && pipeline)
        drop->removeWhenReleased();
    Tray* tray = &m_deps.tray;
    auto deliver = [tray, target = pipeline ? std::optional<Pipeline>(*pipeline) : std::nullopt, targetRect,
                    drop](const QList<QUrl>& urls) {
        if (urls.isEmpty())
            return;
        if (target)
            target->action(urls, targetRect, [drop] {});
        else
            tray->addFilesFromURLs(urls, {}, drop);
    };

    const Dropped dropped = resolve(pasteboard);
    if (!dropped.files.isEmpty()) {
        stageTemporaryFiles(dropped.files, drop, tray, deliver);
    } else if (dropped.text) {
        if (folder.isEmpty())
            emitLine(QStringLiteral("Error creating text file: there is no staging folder"));
        else if (const auto written = writeDroppedText(*dropped.text, folder))
            deliver({*written});
    } else if (!dropped.promises.isEmpty() && !folder.isEmpty()) {
        receivePromises(dropped.promises, folder, deliver);
    }
    finishDragging(closeAfter);
    return true;
}

void DropZone::stageTemporaryFiles(const QList<QUrl>& urls, const std::shared_ptr<StagedDrop>& drop, QObject* context,
                                   std::function<void(const QList<QUrl>&)> deliver)
{
    const QString systemTemporary = QDir::tempPath();
    const QString canonicalTemporary = QFileInfo(systemTemporary).canonicalFilePath();
    struct Step {
        QUrl source;
        QString staged; // empty: delivered as it is
    };
    std::vector<Step> steps;
    QSet<QString> names;
    for (const QUrl& url : urls) {
        const QString path = QDir::cleanPath(url.toLocalFile());
        const bool temporary = isInside(path, systemTemporary) || isInside(path, canonicalTemporary);
        const QString name = QFileInfo(path).fileName();
        // Two files of one name from two folders: the second goes in from where it is.
        if (!drop || !temporary || names.contains(name)) {
            steps.push_back({url, {}});
            continue;
        }
        names.insert(name);
        steps.push_back({url, QDir(drop->folder()).filePath(name)});
    }
    // Hard links are made at once; copies, which take as long as the file is large, beside the
    // notch. The drop's folder is its own, so every staged name is free.
    bool linked = true;
    for (const Step& step : steps)
        if (!step.staged.isEmpty() && linked)
            linked = QFileInfo(step.source.toLocalFile()).isFile() &&
                     ::link(QFile::encodeName(step.source.toLocalFile()).constData(),
                            QFile::encodeName(step.staged).constData()) == 0;
    if (linked) {
        QList<QUrl> staged;
        for (const Step& step : steps)
            staged.append(step.staged.isEmpty() ? step.source : QUrl::fromLocalFile(step.staged));
        deliver(staged);
        return;
    }
    // What was linked before a link failed is staged again below, with the rest.
    for (const Step& step : steps)
        if (!step.staged.isEmpty())
            QFile::remove(step.staged);
    auto* watcher = new QFutureWatcher<Handed<QList<QUrl>>>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context, [watcher, deliver, drop] {
        watcher->deleteLater();
        deliver(*watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(Handed([steps]() -> Handed<QList<QUrl>> {
        QList<QUrl> staged;
        for (const Step& step : steps) {
            if (step.staged.isEmpty()) {
                staged.append(step.source);
            } else if (const auto error = linkOrCopyItem(step.source.toLocalFile(), step.staged)) {
                emitLine(QStringLiteral("Error moving file: ") + error.value());
                staged.append(step.source);
            } else {
                staged.append(QUrl::fromLocalFile(step.staged));
            }
        }
        return staged;
    })));
}

DropZone::Dropped DropZone::resolve(const Pasteboard& pasteboard)
{
    Dropped dropped;
    dropped.files = pasteboard.fileURLs();
    if (!dropped.files.isEmpty())
        return dropped;
    for (const QString& type :
         {PasteboardType::url, PasteboardType::legacyURL, PasteboardType::plainText, PasteboardType::legacyString})
        if ((dropped.text = pasteboard.string(type)))
            return dropped;
    dropped.promises = pasteboard.filePromiseReceivers();
    return dropped;
}

DropZone::TextFile DropZone::textFile(const QString& text)
{
    if (const QString address = text.trimmed(); isWebAddress(address))
        return {QStringLiteral("shared_url.webloc"), weblocPropertyList(address)};
    return {QStringLiteral("shared_text.txt"), text.toUtf8()};
}

std::optional<QUrl> DropZone::writeDroppedText(const QString& text, const QString& folder)
{
    const TextFile file = textFile(text);
    const QString path = QDir(folder).filePath(file.name);
    auto error = writeFile(path, file.contents);
    if (!error)
        return QUrl::fromLocalFile(path);
    if (!file.name.endsWith(QLatin1StringView(".webloc"))) {
        emitLine(QStringLiteral("Error creating text file: ") + *error);
        return std::nullopt;
    }
    emitLine(QStringLiteral("Error creating .webloc file: ") + *error);
    error = writeFile(path, QStringLiteral("[InternetShortcut]\nURL=%1").arg(text.trimmed()).toUtf8());
    if (!error)
        return QUrl::fromLocalFile(path);
    emitLine(QStringLiteral("Fallback URL file creation failed: ") + *error);
    return std::nullopt;
}

void DropZone::receivePromises(const QList<std::shared_ptr<FilePromiseReceiver>>& receivers, const QString& folder,
                               std::function<void(const QList<QUrl>&)> deliver)
{
    // Delivered once every receiver has answered, in the receivers' order.
    struct Pending {
        std::vector<std::optional<QUrl>> files;
        qsizetype outstanding = 0;
        std::function<void(const QList<QUrl>&)> deliver;
    };
    auto pending = std::make_shared<Pending>();
    pending->files.resize(receivers.size());
    pending->outstanding = receivers.size();
    pending->deliver = std::move(deliver);
    for (qsizetype i = 0; i < receivers.size(); ++i) {
        receivers[i]->receive(folder, [pending, i](const std::optional<QUrl>& file, const QString& error) {
            if (!file)
                emitLine(QStringLiteral("Error receiving promised file: ") + error);
            pending->files[static_cast<size_t>(i)] = file;
            if (--pending->outstanding > 0)
                return;
            QList<QUrl> urls;
            for (const auto& received : pending->files)
                if (received)
                    urls.append(*received);
            pending->deliver(urls);
        });
    }
}

void DropZone::finishDragging(bool close)
{
    m_exitTimer.cancel();
    m_boundary = {};
    if (m_droppingCoords) {
        m_droppingCoords.reset();
        Q_EMIT droppingCoordsChanged();
    }
    setHovered(std::nullopt);
    setAvailableActions({});
    m_deps.kelvane.setMode(close ? KelvaneState::Mode::closed : KelvaneState::Mode::tray, finishSpring);
}

void DropZone::bindDropAreaCoords(const QString& id, const QRectF& rect)
{
    m_targetsCoords.insert(id, rect);
}

void DropZone::unbindDropAreaCoords(const QString& id)
{
    m_targetsCoords.remove(id);
}

void DropZone::setDropsSuppressed(bool suppressed)
{
    if (m_dropsSuppressed == suppressed)
        return;
    m_dropsSuppressed = suppressed;
    Q_EMIT dropsSuppressedChanged();
}

void DropZone::setHovered(const std::optional<QString>& id)
{
    if (m_hoveredDropTargetID == id)
        return;
    m_hoveredDropTargetID = id;
    Q_EMIT hoveredDropTargetIDChanged();
}

void DropZone::setAvailableActions(const QList<Pipeline>& actions)
{
    if (m_availableActions == actions)
        return;
    m_availableActions = actions;
    Q_EMIT availableActionsChanged();
}

QString DropZone::labelOf(const Pipeline& pipeline) const
{
    // The sharing target is named after the service that will really send, where one runs.
    const QString service = m_deps.sharing.serviceName();
    return pipeline.id == QLatin1StringView("airdrop") && !service.isEmpty() ? service : pipeline.label;
}

QJsonObject DropZone::stateJson() const
{
    QJsonArray offered, labels;
    for (const Pipeline& pipeline : m_availableActions) {
        offered.append(pipeline.id);
        labels.append(labelOf(pipeline));
    }
    return {{QStringLiteral("offered"), offered},
            {QStringLiteral("labels"), labels},
            {QStringLiteral("hovered"), m_hoveredDropTargetID ? QJsonValue(*m_hoveredDropTargetID) : QJsonValue()},
            {QStringLiteral("suppressed"), m_dropsSuppressed}};
}

QVariantList DropZone::availableActionsForView() const
{
    QVariantList list;
    for (const Pipeline& pipeline : m_availableActions)
        list.append(QVariantMap{{QStringLiteral("id"), pipeline.id},
                                {QStringLiteral("label"), labelOf(pipeline)},
                                {QStringLiteral("icon"), pipeline.icon}});
    return list;
}

} // namespace kelvane
