#include "BluezSource.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

namespace kelvane {

namespace {
const QString service = QStringLiteral("org.bluez");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString deviceInterface = QStringLiteral("org.bluez.Device1");
const QString batteryInterface = QStringLiteral("org.bluez.Battery1");
const QString adapterInterface = QStringLiteral("org.bluez.Adapter1");

// a{sv}: properties.
QVariantMap properties(const QVariant& value)
{
    QVariantMap result;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() == QLatin1StringView("a{sv}"))
        argument >> result;
    return result;
}

// a{sa{sv}}: interfaces with their properties.
QMap<QString, QVariantMap> interfaces(const QDBusArgument& argument)
{
    QMap<QString, QVariantMap> result;
    if (argument.currentSignature() != QLatin1StringView("a{sa{sv}}"))
        return result;
    argument >> result;
    return result;
}

// a{oa{sa{sv}}}: objects with their interfaces.
BluezSource::Objects objects(const QDBusArgument& argument)
{
    BluezSource::Objects result;
    if (argument.currentSignature() != QLatin1StringView("a{oa{sa{sv}}}"))
        return result;
    argument.beginMap();
    while (!argument.atEnd()) {
        QDBusObjectPath path;
        argument.beginMapEntry();
        argument >> path;
        result.insert(path.path(), interfaces(argument));
        argument.endMapEntry();
    }
    argument.endMap();
    return result;
}
} // namespace

BluezSource::BluezSource(QDBusConnection systemBus, QObject* parent)
    : BluetoothSource(parent)
    , m_bus(std::move(systemBus))
{
}

void BluezSource::start()
{
    if (!m_bus.isConnected()) {
        Q_EMIT unavailable(QStringLiteral("there is no system bus"));
        return;
    }
    m_bus.connect(service, QStringLiteral("/"), objectManager, QStringLiteral("InterfacesAdded"), this,
                  SLOT(interfacesAdded(QDBusMessage)));
    m_bus.connect(service, QStringLiteral("/"), objectManager, QStringLiteral("InterfacesRemoved"), this,
                  SLOT(interfacesRemoved(QDBusMessage)));
    m_bus.connect(service, QString(), QStringLiteral("org.freedesktop.DBus.Properties"),
                  QStringLiteral("PropertiesChanged"), this, SLOT(propertiesChanged(QDBusMessage)));
    auto* watcher = new QDBusServiceWatcher(
        service, m_bus, QDBusServiceWatcher::WatchForRegistration | QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &BluezSource::fetch);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        m_objects.clear();
        publish();
    });
    fetch();
}

void BluezSource::fetch()
{
    const QDBusMessage call = QDBusMessage::createMethodCall(service, QStringLiteral("/"), objectManager,
                                                             QStringLiteral("GetManagedObjects"));
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusMessage reply = finished->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            if (!std::exchange(m_reportedMissing, true))
                Q_EMIT unavailable(
                    QStringLiteral("BlueZ does not answer on the system bus (%1)").arg(reply.errorName()));
            return;
        }
        m_objects = objects(reply.arguments().constFirst().value<QDBusArgument>());
        if (!hasAdapter(m_objects) && !std::exchange(m_reportedMissing, true))
            Q_EMIT unavailable(QStringLiteral("BlueZ has no adapter"));
        publish();
    });
}

void BluezSource::interfacesAdded(const QDBusMessage& message)
{
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2)
        return;
    const QString path = arguments.at(0).value<QDBusObjectPath>().path();
    const auto added = interfaces(arguments.at(1).value<QDBusArgument>());
    auto& known = m_objects[path];
    for (auto it = added.begin(); it != added.end(); ++it)
        known.insert(it.key(), it.value());
    publish();
}

void BluezSource::interfacesRemoved(const QDBusMessage& message)
{
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2)
        return;
    const QString path = arguments.at(0).value<QDBusObjectPath>().path();
    auto known = m_objects.find(path);
    if (known == m_objects.end())
        return;
    for (const QString& name : arguments.at(1).toStringList())
        known->remove(name);
    if (known->isEmpty())
        m_objects.erase(known);
    publish();
}

void BluezSource::propertiesChanged(const QDBusMessage& message)
{
    const QList<QVariant> arguments = message.arguments();
    if (arguments.size() < 2)
        return;
    const QString interface = arguments.at(0).toString();
    if (interface != deviceInterface && interface != batteryInterface)
        return;
    auto known = m_objects.find(message.path());
    if (known == m_objects.end())
        return;
    QVariantMap& current = (*known)[interface];
    const QVariantMap changed = properties(arguments.at(1));
    for (auto it = changed.begin(); it != changed.end(); ++it)
        current.insert(it.key(), it.value());
    if (arguments.size() > 2) {
        for (const QString& name : arguments.at(2).toStringList())
            current.remove(name);
    }
    publish();
}

void BluezSource::publish() { Q_EMIT devicesChanged(devices(m_objects)); }

bool BluezSource::hasAdapter(const Objects& objects)
{
    return std::any_of(objects.begin(), objects.end(),
                       [](const auto& interfaces) { return interfaces.contains(adapterInterface); });
}

QList<BluetoothDevice> BluezSource::devices(const Objects& objects)
{
    QList<BluetoothDevice> result;
    for (auto it = objects.begin(); it != objects.end(); ++it) {
        const auto device = it->find(deviceInterface);
        if (device == it->end())
            continue;
        const auto text = [&](const char* name) {
            const QVariant value = device->value(QLatin1StringView(name));
            return value.typeId() == QMetaType::QString ? value.toString() : QString();
        };
        BluetoothDevice entry;
        entry.id = it.key();
        entry.name = text("Alias");
        if (entry.name.isEmpty())
            entry.name = text("Name");
        if (entry.name.isEmpty())
            entry.name = text("Address");
        entry.icon = text("Icon");
        const QVariant connected = device->value(QStringLiteral("Connected"));
        entry.connected = connected.typeId() == QMetaType::Bool && connected.toBool();
        if (const auto battery = it->find(batteryInterface); battery != it->end()) {
            bool ok = false;
            const int percentage = battery->value(QStringLiteral("Percentage")).toInt(&ok);
            if (ok && percentage >= 0 && percentage <= 100)
                entry.battery = percentage;
        }
        result.append(entry);
    }
    return result;
}

} // namespace kelvane
