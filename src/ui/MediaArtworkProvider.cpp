#include "MediaArtworkProvider.h"

#include "media/MediaManager.h"

namespace kelvane {

MediaArtworkProvider::MediaArtworkProvider(MediaManager* media)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , m_media(media)
{
}

QImage MediaArtworkProvider::requestImage(const QString&, QSize* size, const QSize& requestedSize)
{
    QImage image = m_media ? m_media->track().albumArt : QImage();
    if (!image.isNull() && requestedSize.isValid())
        image = image.scaled(requestedSize, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    if (size)
        *size = image.size();
    return image;
}

} // namespace kelvane
