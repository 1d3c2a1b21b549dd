#include "ImageProviders.h"

#include "core/HandOff.h"
#include "media/MediaManager.h"
#include "tray/Tray.h"

#include <QFileInfo>
#include <QUrl>

#include <poppler-qt6.h>

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
        QMetaObject::invokeMethod(m_tray.data(), Handed([&] {
                                      if (const TrayFile* file = m_tray->fileWithId(id))
                                          image = file->image();
                                      handOver(&image);
                                  }),
                                  QThread::currentThread() == m_tray->thread() ? Qt::DirectConnection
                                                                               : Qt::BlockingQueuedConnection);
    takeOver(&image);
    return answer(image, size, requestedSize);
}

PdfPageProvider::PdfPageProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{
}

QImage PdfPageProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const QImage page = firstPage(QUrl(id).toLocalFile(), requestedSize);
    if (size)
        *size = page.size();
    return page;
}

QImage PdfPageProvider::firstPage(const QString& path, const QSize& requestedSize)
{
    // Only a regular file is opened: a pipe named like a PDF would never answer.
    if (!QFileInfo(path).isFile())
        return {};
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::load(path);
    if (!document || document->isLocked() || document->numPages() < 1)
        return {};
    const std::unique_ptr<Poppler::Page> page = document->page(0);
    const QSizeF points = page ? page->pageSizeF() : QSizeF();
    if (points.isEmpty())
        return {};
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    const QSize fit = requestedSize.isValid() && !requestedSize.isEmpty() ? requestedSize : QSize(1024, 1024);
    const QSizeF wanted = points.scaled(QSizeF(std::min(fit.width(), 1024), std::min(fit.height(), 1024)), Qt::KeepAspectRatio);
    const double dpi = 72.0 * wanted.width() / points.width();
    return page->renderToImage(dpi, dpi);
}

} // namespace kelvane
