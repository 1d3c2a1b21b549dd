#pragma once

#include <QList>
#include <QObject>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>

namespace kelvane {

// What the rules need to know of one connected screen.
struct ScreenInfo {
    // The platform's screen object: identity only, never dereferenced by the rules.
    QObject* handle = nullptr;
    // A stable name or number of the display; absent when the platform gives none.
    std::optional<QString> number;
    // In points, top-left origin, in desktop coordinates.
    QRectF frame;
    double backingScaleFactor = 1;
    // Absent counts as the generic device colour space.
    std::optional<QString> colorSpace;
    std::optional<QSizeF> physicalSizeMm;
    // Height of the camera housing at the top of the screen; 0 when the screen has none.
    double safeAreaTopInset = 0;
};

// The connected screens, in the system's order, and word of any change to them.
class ScreenProvider : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    virtual QList<ScreenInfo> screens() const = 0;
    // The screen that holds the focused window or, failing that, the primary screen.
    virtual QObject* mainScreen() const = 0;

Q_SIGNALS:
    // Screens were added or removed, or one changed its frame, scale or colour space.
    void screenParametersChanged();
};

} // namespace kelvane
