#pragma once

#include <QImage>
#include <QQuickItem>

namespace kelvane {

// A picture that changes often (a camera's), drawn filling the item with its middle kept. Works
// with every scene renderer, software included.
class LiveImage : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)
public:
    explicit LiveImage(QQuickItem* parent = nullptr);
    QImage image() const { return m_image; }
    void setImage(const QImage& image);

Q_SIGNALS:
    void imageChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

private:
    QImage m_image;
    bool m_changed = false;
};

} // namespace kelvane
