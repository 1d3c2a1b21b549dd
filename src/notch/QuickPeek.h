#pragma once

#include <QObject>
#include <QString>

namespace kelvane {

// Transient content shown on the closed notch for a moment (a calendar event about to start...).
struct QuickPeek {
    Q_GADGET
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString detail MEMBER detail)
public:
    QString title;
    QString detail;
    bool operator==(const QuickPeek&) const = default;
};

} // namespace kelvane

Q_DECLARE_METATYPE(kelvane::QuickPeek)
