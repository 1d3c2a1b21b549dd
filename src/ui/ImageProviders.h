#pragma once

#include <QPointer>
#include <QQuickImageProvider>

#include <memory>

namespace kelvane {

class MediaManager;
class SharedPicture;
class Tray;

// "image://media/…": the artwork of the track playing now, whatever follows the host name (the
// views add the track's identity so that a new track is a new address).
class MediaArtworkProvider final : public QQuickImageProvider {
public:
    explicit MediaArtworkProvider(MediaManager* media);
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    QPointer<MediaManager> m_media;
};

// "image://tray/<file id>": the picture of an image file held in the tray.
class TrayImageProvider final : public QQuickImageProvider {
public:
    explicit TrayImageProvider(Tray* tray);
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    QPointer<Tray> m_tray;
};

// "image://pdfpage/<file URL>": the first page of a PDF file, rendered to fit the size asked for
// (at most 1024 points on its longer side). Asked for asynchronously, it renders beside the
// notch; a file that is not a readable PDF gives a null image.
class PdfPageProvider final : public QQuickImageProvider {
public:
    PdfPageProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
    static QImage firstPage(const QString& path, const QSize& requestedSize);
};

// "image://icon/<theme name or absolute path>": an application's icon from the desktop's icon
// theme (or its file), at the size asked for; an application without one gets the generic
// program icon, and where the theme has neither, a plain tile drawn here.
class ThemeIconProvider final : public QQuickImageProvider {
public:
    ThemeIconProvider();
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

// "image://glass/<picture serial>/<screen x,y,w,h>/<window x,y,w,h>/<frost>": the part of the desktop
// picture that lies behind a notch window, frosted, for the glass look to bend. Asked for
// asynchronously, it is cut and frosted beside the notch.
class GlassBackdropProvider final : public QQuickImageProvider {
public:
    explicit GlassBackdropProvider(std::shared_ptr<const SharedPicture> picture);
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

private:
    const std::shared_ptr<const SharedPicture> m_picture;
};

} // namespace kelvane
