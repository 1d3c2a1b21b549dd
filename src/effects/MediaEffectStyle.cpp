#include "MediaEffectStyle.h"

#include "CurrentWallpaperManager.h"
#include "GifPlacement.h"
#include "Palette.h"
#include "core/HandOff.h"

#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent>

#include <algorithm>
#include <cmath>

namespace kelvane {

QUrl MediaEffectStyle::predefinedGif(PredefinedGIF gif)
{
    return QUrl(QStringLiteral("qrc:/kelvane/animations/%1.gif").arg(json::rawValue(gif)));
}

MediaEffectStyle::MediaEffectStyle(SettingsStore& settings, CurrentWallpaperManager* wallpaper, QObject* parent)
    : QObject(parent)
    , m_settings(settings, Keys::mediaLiveActivitySettings(), this,
                 [this](const auto&) {
                     Q_EMIT settingsChanged();
                     Q_EMIT accentChanged();
                 })
    , m_activities(settings, Keys::liveActivitiesSettings(), this, [this](const auto&) { Q_EMIT settingsChanged(); })
    , m_wallpaper(wallpaper)
{
    if (m_wallpaper)
        connect(m_wallpaper, &CurrentWallpaperManager::colorsChanged, this, &MediaEffectStyle::accentChanged);
}

QString MediaEffectStyle::effect() const { return json::rawValue(m_settings->effect); }

QColor MediaEffectStyle::accent() const
{
    if (!m_settings->isAutomaticallyColored)
        return QColor(Qt::white);
    if (m_artworkColor.isValid())
        return m_artworkColor;
    if (m_wallpaper && m_wallpaper->accent().isValid())
        return m_wallpaper->accent();
    return QColor(Qt::white);
}

qreal MediaEffectStyle::albumCornerRadius() const
{
    const double radius = m_settings->albumCornerRadius;
    return std::isfinite(radius) ? std::clamp(radius, 0.0, 64.0) : 5.0;
}

QUrl MediaEffectStyle::gifSource() const
{
    // The user's own file while it is there; otherwise the chosen animation of the project's own.
    if (const auto& custom = m_settings->customGifURL;
        custom && custom->isLocalFile() && QFileInfo(custom->toLocalFile()).isFile())
        return *custom;
    return predefinedGif(m_settings->selectedGIF);
}

bool MediaEffectStyle::gifSmooth() const { return smoothGif(m_settings->gifScalingQuality); }

QRectF MediaEffectStyle::gifRect(const QSizeF& box, const QSizeF& frame) const
{
    return placeGif(box, frame, m_settings->gifScale, m_settings->gifHorizontalOffset, m_settings->gifVerticalOffset);
}

void MediaEffectStyle::setArtwork(const QString& id, const QImage& artwork)
{
    // The same track's artwork often arrives after its title: a new picture counts as new.
    const QString key = id + u'#' + QString::number(artwork.cacheKey());
    if (key == m_artworkId)
        return;
    m_artworkId = key;
    m_artwork = artwork;
    const int generation = ++m_generation;
    if (artwork.isNull()) {
        m_artworkColor = {};
        Q_EMIT accentChanged();
        return;
    }
    auto* watcher = new QFutureWatcher<Handed<QColor>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, generation] {
        watcher->deleteLater();
        // A newer track's artwork has been asked for since: this colour is not wanted.
        if (generation != m_generation)
            return;
        m_artworkColor = *watcher->result();
        Q_EMIT accentChanged();
    });
    watcher->setFuture(QtConcurrent::run(Handed([artwork]() -> Handed<QColor> { return Palette::accent(artwork); })));
}

} // namespace kelvane
