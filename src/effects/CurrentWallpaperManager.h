#pragma once

#include <QColor>
#include <QImage>
#include <QMutex>
#include <QObject>
#include <QVariantList>

#include <functional>
#include <memory>

namespace kelvane {

// Where the desktop keeps its current picture.
class WallpaperSource {
public:
    virtual ~WallpaperSource() = default;
    // A job that reads the current picture (a null one when there is none); it owns what it needs
    // and runs away from the main thread, as reading and decoding a photo takes a while.
    virtual std::function<QImage()> reader() = 0;
    // Told on the main thread when the desktop's picture may have changed.
    virtual void setChangeHandler(std::function<void()> handler) = 0;
};

// The current desktop picture, readable from any thread: the views' image readers run on their
// own and may outlive the manager, so they hold it shared.
class SharedPicture {
public:
    QImage get() const
    {
        QMutexLocker lock(&m_mutex);
        return m_picture;
    }
    void set(const QImage& picture)
    {
        QMutexLocker lock(&m_mutex);
        m_picture = picture;
    }

private:
    mutable QMutex m_mutex;
    QImage m_picture;
};

// The current desktop picture and its colours, for the effects: a fallback colour for the media
// effect, and the picture the glass look bends where the desktop blurs nothing behind windows.
class CurrentWallpaperManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantList colors READ colorsForViews NOTIFY colorsChanged)
    Q_PROPERTY(QColor accent READ accent NOTIFY colorsChanged)
    Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY pictureChanged)
    // Changes with every new picture, so that views reload it.
    Q_PROPERTY(int pictureSerial READ pictureSerial NOTIFY pictureChanged)
public:
    // The picture is kept at most this wide: enough for a blurred backdrop, small in memory.
    static constexpr int keptWidth = 1920;

    explicit CurrentWallpaperManager(WallpaperSource& source, QObject* parent = nullptr);

    QList<QColor> colors() const { return m_colors; }
    QVariantList colorsForViews() const;
    QColor accent() const { return m_accent; }
    bool hasPicture() const { return !m_picture.isNull(); }
    QImage picture() const { return m_picture; }
    int pictureSerial() const { return m_serial; }
    // The same picture for other threads, already the new one when pictureChanged is told.
    std::shared_ptr<const SharedPicture> sharedPicture() const { return m_shared; }

    // Reads the picture again (at start, and when the desktop says it changed).
    void refresh();

Q_SIGNALS:
    void colorsChanged();
    void pictureChanged();

private:
    WallpaperSource& m_source;
    QImage m_picture;
    std::shared_ptr<SharedPicture> m_shared = std::make_shared<SharedPicture>();
    QList<QColor> m_colors;
    QColor m_accent;
    int m_serial = 0;
    int m_generation = 0;
};

} // namespace kelvane
