#pragma once

#include <QObject>
#include <QSet>

#include <functional>

namespace kelvane {

// The views that show something right now, one per screen or item; a view that is destroyed no
// longer shows. The owner hears only when the first view appears or the last one goes.
class Viewers : public QObject {
public:
    explicit Viewers(std::function<void(bool any)> onChange, QObject* parent = nullptr)
        : QObject(parent)
        , m_onChange(std::move(onChange))
    {
    }

    bool any() const { return !m_viewers.isEmpty(); }

    void set(bool shown, QObject* viewer)
    {
        if (shown == m_viewers.contains(viewer))
            return;
        const bool before = any();
        if (shown) {
            m_viewers.insert(viewer);
            if (viewer)
                connect(viewer, &QObject::destroyed, this, [this, viewer] { set(false, viewer); });
        } else {
            m_viewers.remove(viewer);
            if (viewer)
                disconnect(viewer, &QObject::destroyed, this, nullptr);
        }
        if (before != any() && m_onChange)
            m_onChange(any());
    }

private:
    std::function<void(bool)> m_onChange;
    QSet<QObject*> m_viewers;
};

} // namespace kelvane
