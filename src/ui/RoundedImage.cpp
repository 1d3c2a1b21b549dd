#include "RoundedImage.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kelvane {

RoundedImage::RoundedImage(QQuickItem* parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void RoundedImage::setImage(const QImage& image)
{
    m_image = image;
    Q_EMIT changed();
    update();
}

void RoundedImage::setRadius(qreal radius)
{
    radius = std::isfinite(radius) ? std::max(0.0, radius) : 0.0;
    if (radius == m_radius)
        return;
    m_radius = radius;
    Q_EMIT changed();
    update();
}

void RoundedImage::paint(QPainter* painter)
{
    if (m_image.isNull() || width() < 1 || height() < 1)
        return;
    painter->setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QRectF box(0, 0, width(), height());
    QPainterPath clip;
    const qreal r = std::min({m_radius, width() / 2, height() / 2});
    clip.addRoundedRect(box, r, r);
    painter->setClipPath(clip);
    // The picture's middle, cut to the item's proportions.
    QSizeF part = box.size().scaled(m_image.size(), Qt::KeepAspectRatio);
    const QRectF source((m_image.width() - part.width()) / 2, (m_image.height() - part.height()) / 2, part.width(),
                        part.height());
    painter->drawImage(box, m_image, source);
}

} // namespace kelvane
