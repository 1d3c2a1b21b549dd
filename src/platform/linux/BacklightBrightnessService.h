#pragma once

#include "hud/LevelKeys.h"

#include <QDBusConnection>

namespace kelvane {

// The display's brightness from the kernel's backlight folder (brightness ÷ max_brightness of its
// first device). Changes are written to the device, or asked of logind when the file is not
// writable by the user.
class BacklightBrightnessService final : public BrightnessService {
public:
    // `root` is "/sys/class/backlight" on a real machine.
    BacklightBrightnessService(QString root, QDBusConnection systemBus);

    std::optional<double> read(QString* why) override;
    void step(double delta) override;

    // The folder to read: $KELVANE_BACKLIGHT_ROOT when set, else the kernel's.
    static QString defaultRoot();

private:
    struct Device {
        QString path;
        QString name;
        long brightness = 0;
        long maximum = 0;
    };
    std::optional<Device> device(QString* why) const;

    QString m_root;
    QDBusConnection m_systemBus;
};

} // namespace kelvane
