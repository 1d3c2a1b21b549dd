#pragma once

#include "settings/LiveActivityRecords.h"
#include "settings/SettingValue.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QRectF>
#include <QUrl>

namespace kelvane {

class CurrentWallpaperManager;

// How the media effect and the artwork look, from the media live activity's settings: the effect,
// its colour (the artwork's own, or the desktop picture's while there is no artwork, when
// colouring is automatic; white otherwise), the artwork's corners, and the animation to play.
class MediaEffectStyle : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString effect READ effect NOTIFY settingsChanged)
    Q_PROPERTY(QColor accent READ accent NOTIFY accentChanged)
    // The artwork's colour whether or not colouring is automatic (the media widget's own tint).
    Q_PROPERTY(QColor artworkColor READ artworkColor NOTIFY accentChanged)
    // The playing track's artwork, for the views that round its corners.
    Q_PROPERTY(QImage artwork READ artwork NOTIFY accentChanged)
    Q_PROPERTY(qreal albumCornerRadius READ albumCornerRadius NOTIFY settingsChanged)
    Q_PROPERTY(QUrl gifSource READ gifSource NOTIFY settingsChanged)
    Q_PROPERTY(bool gifSmooth READ gifSmooth NOTIFY settingsChanged)
    // The volume indicator stays white when the user asked for a plain one.
    Q_PROPERTY(bool plainIndicator READ plainIndicator NOTIFY settingsChanged)
public:
    // Where the project's own animations are, by identifier.
    static QUrl predefinedGif(PredefinedGIF gif);

    MediaEffectStyle(SettingsStore& settings, CurrentWallpaperManager* wallpaper, QObject* parent = nullptr);

    QString effect() const;
    QColor accent() const;
    QColor artworkColor() const { return m_artworkColor; }
    QImage artwork() const { return m_artwork; }
    qreal albumCornerRadius() const;
    QUrl gifSource() const;
    bool gifSmooth() const;
    bool plainIndicator() const { return m_activities->disableColorsOnAudioHUDReplacement; }
    // The animation's place in a box of the effect's size.
    Q_INVOKABLE QRectF gifRect(const QSizeF& box, const QSizeF& frame) const;

    // The playing track's artwork (a null picture when it has none); its colour is worked out
    // once per artwork, away from the main thread.
    void setArtwork(const QString& id, const QImage& artwork);

Q_SIGNALS:
    void settingsChanged();
    void accentChanged();

private:
    SettingValue<MediaLiveActivitySettings> m_settings;
    SettingValue<LiveActivitiesSettings> m_activities;
    CurrentWallpaperManager* m_wallpaper;
    QString m_artworkId;
    QImage m_artwork;
    QColor m_artworkColor;
    int m_generation = 0;
};

} // namespace kelvane
