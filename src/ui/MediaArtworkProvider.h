#pragma once

#include <QPointer>
#include <QQuickImageProvider>

namespace kelvane {

class MediaManager;

// "image://media/…": the artwork of the track playing now, whatever follows the host name (the
// views add the track's identity so that a new track is a new address).
class MediaArtworkProvider final : public QQuickImageProvider {
public:
    explicit MediaArtworkProvider(MediaManager* media);
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    QPointer<MediaManager> m_media;
};

} // namespace kelvane
