#include "ImageProviders.h"

#include "media/MediaManager.h"
#include "tray/Tray.h"

namespace kelvane {

namespace {
QImage answer(QImage image, QSize* size, const QSize& requestedSize)
{
    if (!image.isNull() && requestedSize.isValid())
        image = image.scaled(requestedSize, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    if (size)
        *size = image.size();
    return image;
}
} // namespace

MediaArtworkProvider::MediaArtworkProvider(MediaManager* media)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , m_media(media)
{
}

QImage MediaArtworkProvider::requestImage(const QString&, QSize* size, const QSize& requestedSize)
{
    return answer(m_media ? m_media->track().albumArt : QImage(), size, requestedSize);
}

TrayImageProvider::TrayImageProvider(Tray* tray)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , m_tray(tray)
{
}

QImage TrayImageProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    // Asked from the scene graph's thread: the file is looked up on the tray's.
    QImage image;
    if (m_tray)
        QMetaObject::invokeMethod(
            m_tray.data(),
            [&] {
                if (const TrayFile* file = m_tray->fileWithId(id))
                    image = file->image();
            },
            QThread::currentThread() == m_tray->thread() ? Qt::DirectConnection : Qt::BlockingQueuedConnection);
    return answer(image, size, requestedSize);
}

} // namespace kelvane
