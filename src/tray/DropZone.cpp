#include "DropZone.h"

#include "TemporaryFiles.h"
#include "Tray.h"

#include "core/Log.h"
#include "core/MainThread.h"

#include <QDir>
#include <QJsonArray>
#include <QFileInfo>
#include <QPointer>
#include <QSaveFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

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

std::optional<QString> extractTextOrURL(const Pasteboard& pasteboard)
{
    for (const QString& type : {PasteboardType::url, PasteboardType::legacyURL, PasteboardType::plainText,
                                PasteboardType::legacyString})
        if (auto text = pasteboard.string(type))
            return text;
    return std::nullopt;
}
} // namespace

DropZone::DropZone(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_general(dependencies.settings, Keys::generalSettings(), this)
{
}

bool DropZone::viewEntered(const QRectF& viewOnDesktop, const Pasteboard& pasteboard)
{
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

    const QString folder = applicationTemporaryFolder();
    if (!QDir().mkpath(folder))
        emitLine(QStringLiteral("Error creating app temp directory: ") +
                 QStringLiteral("cannot create \"%1\"").arg(folder));

    auto deliver = [this, target = pipeline ? std::optional<Pipeline>(*pipeline) : std::nullopt, targetRect,
                    folder](const QList<QUrl>& urls) {
        if (urls.isEmpty())
            return;
        if (target) {
            target->action(urls, targetRect);
            cleanupTemporaryDirectory(folder);
        } else {
            m_deps.tray.addFilesFromURLs(urls);
        }
    };

    if (const QList<QUrl> files = pasteboard.fileURLs(); !files.isEmpty()) {
        deliver(stageTemporaryFiles(files, folder));
    } else if (const auto text = extractTextOrURL(pasteboard)) {
        if (const auto written = writeDroppedText(*text, folder))
            deliver({*written});
    } else if (const auto receivers = pasteboard.filePromiseReceivers(); !receivers.isEmpty()) {
        receivePromises(receivers, folder, deliver);
    }
    finishDragging(closeAfter);
    return true;
}

QList<QUrl> DropZone::stageTemporaryFiles(const QList<QUrl>& urls, const QString& folder) const
{
    const QString systemTemporary = QDir::tempPath();
    const QString canonicalTemporary = QFileInfo(systemTemporary).canonicalFilePath();
    QList<QUrl> staged;
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        const bool temporary = isInside(path, systemTemporary) || isInside(path, canonicalTemporary);
        if (!temporary || isInside(path, folder)) {
            staged.append(url);
            continue;
        }
        const QString destination = QDir(folder).filePath(QFileInfo(path).fileName());
        QString error;
        if (QFileInfo::exists(destination))
            error = QStringLiteral("\"%1\" already exists").arg(destination);
        else if (std::rename(QFile::encodeName(path).constData(), QFile::encodeName(destination).constData()) != 0)
            error = QStringLiteral("cannot move \"%1\": %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        if (error.isEmpty()) {
            staged.append(QUrl::fromLocalFile(destination));
        } else {
            emitLine(QStringLiteral("Error moving file: ") + error);
            staged.append(url);
        }
    }
    return staged;
}

std::optional<QUrl> DropZone::writeDroppedText(const QString& text, const QString& folder)
{
    const QDir dir(folder);
    if (isWebAddress(text.trimmed())) {
        const QString address = text.trimmed();
        const QString path = dir.filePath(QStringLiteral("shared_url.webloc"));
        auto error = writeFile(path, weblocPropertyList(address));
        if (!error)
            return QUrl::fromLocalFile(path);
        emitLine(QStringLiteral("Error creating .webloc file: ") + *error);
        error = writeFile(path, QStringLiteral("[InternetShortcut]\nURL=%1").arg(address).toUtf8());
        if (!error)
            return QUrl::fromLocalFile(path);
        emitLine(QStringLiteral("Fallback URL file creation failed: ") + *error);
        return std::nullopt;
    }
    const QString path = dir.filePath(QStringLiteral("shared_text.txt"));
    if (const auto error = writeFile(path, text.toUtf8())) {
        emitLine(QStringLiteral("Error creating text file: ") + *error);
        return std::nullopt;
    }
    return QUrl::fromLocalFile(path);
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
    QPointer<DropZone> self(this);
    for (qsizetype i = 0; i < receivers.size(); ++i) {
        receivers[i]->receive(folder, [pending, i, self](const std::optional<QUrl>& file, const QString& error) {
            if (!file)
                emitLine(QStringLiteral("Error receiving promised file: ") + error);
            pending->files[static_cast<size_t>(i)] = file;
            if (--pending->outstanding > 0 || !self)
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

QJsonObject DropZone::stateJson() const
{
    QJsonArray offered;
    for (const Pipeline& pipeline : m_availableActions)
        offered.append(pipeline.id);
    return {{QStringLiteral("offered"), offered},
            {QStringLiteral("hovered"), m_hoveredDropTargetID ? QJsonValue(*m_hoveredDropTargetID) : QJsonValue()},
            {QStringLiteral("suppressed"), m_dropsSuppressed}};
}

QVariantList DropZone::availableActionsForView() const
{
    QVariantList list;
    for (const Pipeline& pipeline : m_availableActions)
        list.append(QVariantMap{{QStringLiteral("id"), pipeline.id},
                                {QStringLiteral("label"), pipeline.label},
                                {QStringLiteral("icon"), pipeline.icon}});
    return list;
}

} // namespace kelvane
