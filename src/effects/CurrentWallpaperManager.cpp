#include "CurrentWallpaperManager.h"

#include "Palette.h"
#include "core/HandOff.h"

#include <QFutureWatcher>
#include <QtConcurrent>

namespace kelvane {

namespace {
struct Reading {
    QImage picture;
    QList<QColor> colors;
    QColor accent;
};
} // namespace

CurrentWallpaperManager::CurrentWallpaperManager(WallpaperSource& source, QObject* parent)
    : QObject(parent)
    , m_source(source)
{
    m_source.setChangeHandler([this] { refresh(); });
}

QVariantList CurrentWallpaperManager::colorsForViews() const
{
    QVariantList list;
    for (const QColor& colour : m_colors)
        list.append(colour);
    return list;
}

void CurrentWallpaperManager::refresh()
{
    const int generation = ++m_generation;
    auto* watcher = new QFutureWatcher<Handed<Reading>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, generation] {
        watcher->deleteLater();
        if (generation != m_generation)
            return;
        const Reading reading = *watcher->result();
        const bool colorsChanged = reading.colors != m_colors || reading.accent != m_accent;
        m_picture = reading.picture;
        m_shared->set(m_picture);
        m_colors = reading.colors;
        m_accent = reading.accent;
        ++m_serial;
        Q_EMIT pictureChanged();
        if (colorsChanged)
            Q_EMIT this->colorsChanged();
    });
    watcher->setFuture(QtConcurrent::run(Handed([read = m_source.reader()]() -> Handed<Reading> {
        Reading reading;
        QImage picture = read ? read() : QImage();
        if (picture.isNull())
            return reading;
        if (picture.width() > keptWidth)
            picture = picture.scaledToWidth(keptWidth, Qt::SmoothTransformation);
        reading.picture = picture.convertToFormat(QImage::Format_RGB32);
        reading.colors = Palette::dominant(reading.picture, 3);
        reading.accent = Palette::accent(reading.picture);
        return reading;
    })));
}

} // namespace kelvane
