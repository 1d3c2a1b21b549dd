#pragma once

#include <QObject>
#include <QString>

namespace kelvane {

// A level to show in the notch after a volume or brightness key.
struct Indicator {
    Q_GADGET
    Q_PROPERTY(Kind kind MEMBER kind)
    Q_PROPERTY(QString icon MEMBER icon)
    Q_PROPERTY(double value MEMBER value)
public:
    enum class Kind { brightness, volume };
    Q_ENUM(Kind)

    Kind kind = Kind::volume;
    QString icon;
    double value = 0; // 0 to 1

    bool operator==(const Indicator&) const = default;
};

} // namespace kelvane

Q_DECLARE_METATYPE(kelvane::Indicator)
