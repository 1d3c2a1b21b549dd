#pragma once

#include "activities/BluetoothSource.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMap>
#include <QVariantMap>

class QDBusArgument;

namespace kelvane {

// BlueZ on the system bus, through its object manager: the devices and their batteries asked for
// asynchronously, then followed through InterfacesAdded, InterfacesRemoved and PropertiesChanged.
class BluezSource final : public BluetoothSource {
    Q_OBJECT
public:
    // Object path to its interfaces, each with its properties.
    using Objects = QMap<QString, QMap<QString, QVariantMap>>;

    explicit BluezSource(QDBusConnection systemBus, QObject* parent = nullptr);

    void start() override;

    // The devices among the objects, in path order; values of the wrong type read as unknown.
    static QList<BluetoothDevice> devices(const Objects& objects);
    static bool hasAdapter(const Objects& objects);

private Q_SLOTS:
    void interfacesAdded(const QDBusMessage& message);
    void interfacesRemoved(const QDBusMessage& message);
    void propertiesChanged(const QDBusMessage& message);

private:
    void fetch();
    void publish();

    QDBusConnection m_bus;
    Objects m_objects;
    bool m_reportedMissing = false;
};

} // namespace kelvane
