#include "NotchShape.h"

#include <QPainter>

#include <algorithm>

namespace kelvane {

NotchShape::NotchShape(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    setOpaquePainting(false);
}

double NotchShape::cornerRadiusFor(const QSizeF& body)
{
    const double grown = 6 + 0.09 * body.height();
    return std::max(0.0, std::min({grown, 24.0, body.width() / 2, body.height() / 2}));
}

double NotchShape::shoulderRadiusFor(const QSizeF& body) { return std::min(cornerRadiusFor(body) * 0.6, 10.0); }

QPainterPath NotchShape::outline(const QSizeF& body)
{
    QPainterPath path;
    const double w = body.width();
    const double h = body.height();
    if (w <= 0 || h <= 0)
        return path;
    const double r = cornerRadiusFor(body);
    const double s = shoulderRadiusFor(body);
    path.moveTo(0, 0);
    // Left shoulder: from the top edge, bending down into the body's side.
    path.quadTo(s, 0, s, s);
    path.lineTo(s, h - r);
    path.arcTo(QRectF(s, h - 2 * r, 2 * r, 2 * r), 180, 90);
    path.lineTo(s + w - r, h);
    path.arcTo(QRectF(s + w - 2 * r, h - 2 * r, 2 * r, 2 * r), 270, 90);
    path.lineTo(s + w, s);
    path.quadTo(s + w, 0, 2 * s + w, 0);
    path.closeSubpath();
    return path;
}

void NotchShape::setColor(const QColor& color)
{
    if (color == m_color)
        return;
    m_color = color;
    Q_EMIT colorChanged();
    update();
}

void NotchShape::setRimColor(const QColor& color)
{
    if (color == m_rimColor)
        return;
    m_rimColor = color;
    Q_EMIT colorChanged();
    update();
}

void NotchShape::setBodyWidth(double width)
{
    width = std::max(0.0, width);
    if (qFuzzyCompare(width + 1, m_bodyWidth + 1))
        return;
    m_bodyWidth = width;
    Q_EMIT geometryChanged();
    update();
}

void NotchShape::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.height() != oldGeometry.height())
        Q_EMIT geometryChanged();
    update();
}

QPainterPath NotchShape::outlineInWindow() const { return outline(body()).translated(mapToScene(QPointF(0, 0))); }

void NotchShape::paint(QPainter* painter)
{
    // Shrunk below a pixel on its way away, there is nothing to paint into.
    if (!painter->isActive())
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    const QPainterPath path = outline(body());
    painter->fillPath(path, m_color);
    if (m_rimColor.alpha() > 0) {
        // Not along the top edge, which is the screen's.
        painter->setClipRect(QRectF(0, 1, width(), height()));
        painter->strokePath(path, QPen(m_rimColor, 1.2));
    }
}

} // namespace kelvane
