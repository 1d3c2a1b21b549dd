#include "GlassLook.h"

#include "settings/Keys.h"

#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace kelvane {

QImage glassBackdrop(const QImage& picture, const QRect& screen, const QRect& area, double blurRadius)
{
    if (picture.isNull() || area.intersected(screen).isEmpty())
        return {};
    const double scale = std::max(double(screen.width()) / picture.width(), double(screen.height()) / picture.height());
    const QPointF offset((screen.width() - picture.width() * scale) / 2, (screen.height() - picture.height() * scale) / 2);
    const QPointF origin = (QPointF(area.topLeft() - screen.topLeft()) - offset) / scale;
    const QRect under = QRectF(origin, QSizeF(area.size()) / scale).toAlignedRect().intersected(picture.rect());
    if (under.isEmpty())
        return {};
    // Frost: the picture made smaller in proportion to the blur, with each pixel the average of
    // those it stands for; stretched back over the area by the renderer's smooth sampling.
    const double shrink = std::max(1.0, blurRadius / 2);
    const QSize size(std::max(1, int(std::lround(area.width() / shrink))), std::max(1, int(std::lround(area.height() / shrink))));
    return picture.copy(under).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGB32);
}

GlassLook::GlassLook(SettingsStore& settings, QObject* parent)
    : QObject(parent)
    , m_general(settings, Keys::generalSettings(), this, [this](const GeneralSettings&) { Q_EMIT changed(); })
    , m_basic(settings, Keys::liquidBasicSettings(), this, [this](const LiquidBasicSettings&) { Q_EMIT changed(); })
    , m_advanced(settings, Keys::liquidGlassSettings(), this, [this](const LiquidGlassSettings&) { Q_EMIT changed(); })
{
}

LiquidGlassSettings GlassLook::effective() const
{
    return m_basic->advancedMode ? m_advanced.get() : LiquidGlassSettings::fromBasic(m_basic.get());
}

QVariantMap GlassLook::parameters() const
{
    return effective().toJson().toVariantMap();
}

QString GlassLook::backdrop() const
{
    if (m_desktopBlurs)
        return QStringLiteral("desktop");
    return m_hasPicture ? QStringLiteral("picture") : QStringLiteral("none");
}

void GlassLook::setDesktopBlurs(bool blurs)
{
    if (blurs == m_desktopBlurs)
        return;
    m_desktopBlurs = blurs;
    Q_EMIT changed();
}

void GlassLook::setHasPicture(bool has)
{
    if (has == m_hasPicture)
        return;
    m_hasPicture = has;
    Q_EMIT changed();
}

} // namespace kelvane
