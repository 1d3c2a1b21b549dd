#include "UPowerSource.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

namespace kelvane {

namespace {
const QString service = QStringLiteral("org.freedesktop.UPower");
const QString displayDevice = QStringLiteral("/org/freedesktop/UPower/devices/DisplayDevice");
const QString deviceInterface = QStringLiteral("org.freedesktop.UPower.Device");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr uint batteryType = 2;
} // namespace

UPowerSource::UPowerSource(QDBusConnection systemBus, QObject* parent)
    : PowerSource(parent)
    , m_bus(std::move(systemBus))
{
}

void UPowerSource::start()
{
    if (!m_bus.isConnected()) {
        Q_EMIT unavailable(QStringLiteral("there is no system bus"));
        return;
    }
    m_bus.connect(service, displayDevice, propertiesInterface, QStringLiteral("PropertiesChanged"), this,
                  SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    m_watcher = new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &UPowerSource::fetch);
    fetch();
}

void UPowerSource::fetch()
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, displayDevice, propertiesInterface, QStringLiteral("GetAll"));
    call << deviceInterface;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusPendingReply<QVariantMap> reply = *finished;
        if (reply.isError()) {
            // Said once: a later start of the service is followed by the watcher.
            if (!m_fetched)
                Q_EMIT unavailable(
                    QStringLiteral("UPower does not answer on the system bus (%1)").arg(reply.error().name()));
            m_fetched = true;
            return;
        }
        m_fetched = true;
        m_properties = reply.value();
        Q_EMIT readingChanged(decode(m_properties));
    });
}

void UPowerSource::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                     const QStringList& invalidated)
{
    if (interface != deviceInterface)
        return;
    for (auto it = changed.begin(); it != changed.end(); ++it)
        m_properties.insert(it.key(), it.value());
    for (const QString& name : invalidated)
        m_properties.remove(name);
    Q_EMIT readingChanged(decode(m_properties));
}

PowerReading UPowerSource::decode(const QVariantMap& properties)
{
    const auto number = [&](const char* name, QMetaType::Type type) -> std::optional<QVariant> {
        const QVariant value = properties.value(QLatin1StringView(name));
        if (!value.isValid() || !value.canConvert(QMetaType(type)))
            return std::nullopt;
        return value;
    };
    PowerReading reading;
    const auto type = number("Type", QMetaType::UInt);
    const auto present = properties.value(QStringLiteral("IsPresent"));
    reading.present = type && type->toUInt() == batteryType && present.typeId() == QMetaType::Bool && present.toBool();
    if (const auto percentage = number("Percentage", QMetaType::Double))
        reading.percentage = percentage->toDouble();
    if (const auto state = number("State", QMetaType::UInt)) {
        // UPower's own numbering.
        static constexpr ChargeState states[] = {
            ChargeState::unknown,      ChargeState::charging,      ChargeState::discharging,     ChargeState::empty,
            ChargeState::fullyCharged, ChargeState::pendingCharge, ChargeState::pendingDischarge};
        const uint index = state->toUInt();
        reading.state = index < std::size(states) ? states[index] : ChargeState::unknown;
    }
    if (const auto seconds = number("TimeToEmpty", QMetaType::LongLong))
        reading.timeToEmpty = std::max<qint64>(0, seconds->toLongLong());
    if (const auto seconds = number("TimeToFull", QMetaType::LongLong))
        reading.timeToFull = std::max<qint64>(0, seconds->toLongLong());
    if (!reading.present)
        return PowerReading{};
    return reading;
}

} // namespace kelvane
