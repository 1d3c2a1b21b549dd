#pragma once

#include "activities/PowerSource.h"

#include <QDBusConnection>
#include <QVariantMap>

class QDBusServiceWatcher;

namespace kelvane {

// UPower's display device (the machine's batteries taken together), on the system bus: asked
// for asynchronously, then followed through its PropertiesChanged signal. A UPower that starts or
// restarts later is read again.
class UPowerSource final : public PowerSource {
    Q_OBJECT
public:
    explicit UPowerSource(QDBusConnection systemBus, QObject* parent = nullptr);

    void start() override;

    // The reading a set of the display device's properties gives; wrong or missing values read as
    // nothing known.
    static PowerReading decode(const QVariantMap& properties);

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed, const QStringList& invalidated);

private:
    void fetch();

    QDBusConnection m_bus;
    QDBusServiceWatcher* m_watcher = nullptr;
    QVariantMap m_properties;
    bool m_fetched = false;
};

} // namespace kelvane
