#include "ImageProviders.h"

#include "core/HandOff.h"
#include "effects/CurrentWallpaperManager.h"
#include "effects/GlassLook.h"
#include "media/MediaManager.h"
#include "tray/Tray.h"

#include <QFileInfo>
#include <QIcon>
#include <QPainter>
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

ThemeIconProvider::ThemeIconProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{
}

QImage ThemeIconProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize)
{
    const QString name = QUrl::fromPercentEncoding(id.toUtf8());
    const int side = requestedSize.isValid() && requestedSize.width() > 0 ? requestedSize.width() : 48;
    QIcon icon = name.startsWith(QLatin1Char('/')) ? QIcon(name) : QIcon::fromTheme(name);
    if (icon.isNull())
        icon = QIcon::fromTheme(QStringLiteral("application-x-executable"));
    QImage image = icon.isNull() ? QImage() : icon.pixmap(QSize(side, side)).toImage();
    if (image.isNull()) {
        // No theme has one: a plain application tile, a window on a rounded square.
        image = QImage(side, side, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        QLinearGradient fill(0, 0, 0, side);
        fill.setColorAt(0, QColor(0x63, 0x63, 0x66));
        fill.setColorAt(1, QColor(0x3a, 0x3a, 0x3c));
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(QRectF(side * 0.06, side * 0.06, side * 0.88, side * 0.88), side * 0.22, side * 0.22);
        painter.setPen(QPen(QColor(0xe5, 0xe5, 0xea), std::max(1.0, side / 24.0)));
        painter.setBrush(Qt::NoBrush);
        const QRectF window(side * 0.26, side * 0.3, side * 0.48, side * 0.4);
        painter.drawRoundedRect(window, side * 0.05, side * 0.05);
        painter.drawLine(QPointF(window.left(), window.top() + side * 0.1), QPointF(window.right(), window.top() + side * 0.1));
    }
    if (size)
        *size = image.size();
    return image;
}

GlassBackdropProvider::GlassBackdropProvider(std::shared_ptr<const SharedPicture> picture)
    : QQuickImageProvider(QQuickImageProvider::Image)
    , m_picture(std::move(picture))
{
}

QImage GlassBackdropProvider::requestImage(const QString& id, QSize* size, const QSize&)
{
    const QStringList parts = id.split(QLatin1Char('/'));
    const auto rect = [&](int index) {
        const QStringList numbers = parts.value(index).split(QLatin1Char(','));
        return numbers.size() == 4 ? QRect(numbers[0].toInt(), numbers[1].toInt(), numbers[2].toInt(), numbers[3].toInt())
                                   : QRect();
    };
    const QImage picture = m_picture->get();
    const QImage backdrop = parts.size() == 4 ? glassBackdrop(picture, rect(1), rect(2), parts[3].toDouble()) : QImage();
    if (size)
        *size = backdrop.size();
    return backdrop;
}

} // namespace kelvane
