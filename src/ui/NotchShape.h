#pragma once

#include <QColor>
#include <QPainterPath>
#include <QQuickPaintedItem>

namespace kelvane {

// The notch as it is drawn: one shape hanging from the top edge, its lower corners rounded and
// small concave shoulders where it meets the edge, both growing with its size, so that closed it
// looks like a camera housing and open like the housing grown into a panel.
//
// The item's height is the body's; its width is the body's plus a shoulder on each side.
class NotchShape : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    // A thin line along the outline's lower edges (none while transparent).
    Q_PROPERTY(QColor rimColor READ rimColor WRITE setRimColor NOTIFY colorChanged)
    Q_PROPERTY(double bodyWidth READ bodyWidth WRITE setBodyWidth NOTIFY geometryChanged)
    Q_PROPERTY(double cornerRadius READ cornerRadius NOTIFY geometryChanged)
    Q_PROPERTY(double shoulderRadius READ shoulderRadius NOTIFY geometryChanged)
public:
    explicit NotchShape(QQuickItem* parent = nullptr);

    // The lower corners' radius for a body of this size.
    static double cornerRadiusFor(const QSizeF& body);
    // The shoulders' radius for a body of this size.
    static double shoulderRadiusFor(const QSizeF& body);
    // The outline of a body of `body` size; x = 0 is the outer end of the left shoulder.
    static QPainterPath outline(const QSizeF& body);

    QColor color() const { return m_color; }
    void setColor(const QColor& color);
    QColor rimColor() const { return m_rimColor; }
    void setRimColor(const QColor& color);
    double bodyWidth() const { return m_bodyWidth; }
    void setBodyWidth(double width);
    double cornerRadius() const { return cornerRadiusFor(body()); }
    double shoulderRadius() const { return shoulderRadiusFor(body()); }

    // The outline in the coordinates of the item's window.
    QPainterPath outlineInWindow() const;

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void colorChanged();
    void geometryChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    QSizeF body() const { return {m_bodyWidth, height()}; }

    QColor m_color = Qt::black;
    QColor m_rimColor = Qt::transparent;
    double m_bodyWidth = 0;
};

} // namespace kelvane
