#pragma once

#include <QImage>
#include <QQuickPaintedItem>

namespace kelvane {

// A picture filling the item with its middle kept and its corners rounded; drawn with a painter,
// so the corners are round under every scene renderer. For small pictures that change seldom.
class RoundedImage : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY changed)
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY changed)
public:
    explicit RoundedImage(QQuickItem* parent = nullptr);
    QImage image() const { return m_image; }
    void setImage(const QImage& image);
    qreal radius() const { return m_radius; }
    void setRadius(qreal radius);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    QImage m_image;
    qreal m_radius = 0;
};

} // namespace kelvane
