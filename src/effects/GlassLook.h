#pragma once

#include "settings/LiquidSettings.h"
#include "settings/PanelSettings.h"
#include "settings/SettingValue.h"

#include <QImage>
#include <QObject>
#include <QRect>
#include <QVariantMap>

namespace kelvane {

// The part of the desktop picture that lies under `area` (desktop coordinates) on a screen that
// shows the picture scaled to cover it and centred (the usual "zoom" or "scaled and cropped"
// placement); a sliver of the area beyond the screen is made up by stretching the rest. Frosted by
// `blurRadius` points, it comes back smaller than the area (a frosted picture needs no more
// detail), to be stretched over it; otherwise at the area's size. A null picture, or an area off
// the screen, gives a null image.
QImage glassBackdrop(const QImage& picture, const QRect& screen, const QRect& area, double blurRadius);

// The glass look of the notch, when the general setting `transluscent` is on: the glass renderer's
// parameters (those the simple controls give, or every advanced one in the advanced mode), and
// what the glass bends: what lies behind the window where the desktop blurs it (KDE's blur-behind),
// else the desktop picture, else nothing (a dark, translucent face with its rim and shadow).
class GlassLook : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool enabled READ enabled NOTIFY changed)
    Q_PROPERTY(QVariantMap parameters READ parameters NOTIFY changed)
    // "desktop" (the desktop blurs what is behind), "picture" (the desktop picture), or "none".
    Q_PROPERTY(QString backdrop READ backdrop NOTIFY changed)
public:
    GlassLook(SettingsStore& settings, QObject* parent = nullptr);

    bool enabled() const { return m_general->transluscent; }
    LiquidGlassSettings effective() const;
    QVariantMap parameters() const;
    QString backdrop() const;

    // Whether the desktop blurs what lies behind a window that asks for it.
    void setDesktopBlurs(bool blurs);
    bool desktopBlurs() const { return m_desktopBlurs; }
    // Whether there is a desktop picture to bend.
    void setHasPicture(bool has);

Q_SIGNALS:
    void changed();

private:
    SettingValue<GeneralSettings> m_general;
    SettingValue<LiquidBasicSettings> m_basic;
    SettingValue<LiquidGlassSettings> m_advanced;
    bool m_desktopBlurs = false;
    bool m_hasPicture = false;
};

} // namespace kelvane
