#include "LiveImage.h"

#include <QQuickWindow>
#include <QSGImageNode>

namespace kelvane {

LiveImage::LiveImage(QQuickItem* parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void LiveImage::setImage(const QImage& image)
{
    if (image.isNull() && m_image.isNull())
        return;
    m_image = image;
    m_changed = true;
    update();
    Q_EMIT imageChanged();
}

QSGNode* LiveImage::updatePaintNode(QSGNode* old, UpdatePaintNodeData*)
{
    auto* node = static_cast<QSGImageNode*>(old);
    if (m_image.isNull() || width() <= 0 || height() <= 0) {
        delete node;
        m_changed = true;
        return nullptr;
    }
    if (!node) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear);
        m_changed = true;
    }
    if (m_changed) {
        node->setTexture(window()->createTextureFromImage(m_image));
        m_changed = false;
    }
    // The part of the picture with the item's proportions, from its middle.
    const QSizeF picture = m_image.size();
    const qreal scale = std::max(width() / picture.width(), height() / picture.height());
    const QSizeF shown(width() / scale, height() / scale);
    node->setSourceRect(QRectF(QPointF((picture.width() - shown.width()) / 2, (picture.height() - shown.height()) / 2), shown));
    node->setRect(boundingRect());
    return node;
}

} // namespace kelvane
