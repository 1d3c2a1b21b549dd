#include "PowerMonitor.h"

#include "core/Log.h"

#include <cmath>

namespace kelvane {

std::optional<bool> isOnExternalPower(ChargeState state)
{
    switch (state) {
    case ChargeState::charging:
    case ChargeState::fullyCharged:
    case ChargeState::pendingCharge:
        return true;
    case ChargeState::discharging:
    case ChargeState::empty:
    case ChargeState::pendingDischarge:
        return false;
    case ChargeState::unknown:
        break;
    }
    return std::nullopt;
}

QString rawValue(ChargeState state)
{
    switch (state) {
    case ChargeState::charging:
        return QStringLiteral("charging");
    case ChargeState::discharging:
        return QStringLiteral("discharging");
    case ChargeState::empty:
        return QStringLiteral("empty");
    case ChargeState::fullyCharged:
        return QStringLiteral("fullyCharged");
    case ChargeState::pendingCharge:
        return QStringLiteral("pendingCharge");
    case ChargeState::pendingDischarge:
        return QStringLiteral("pendingDischarge");
    case ChargeState::unknown:
        break;
    }
    return QStringLiteral("unknown");
}

QString rawValue(BatteryEvent event)
{
    switch (event) {
    case BatteryEvent::pluggedIn:
        return QStringLiteral("pluggedIn");
    case BatteryEvent::unplugged:
        return QStringLiteral("unplugged");
    case BatteryEvent::fullyCharged:
        return QStringLiteral("fullyCharged");
    case BatteryEvent::low:
        break;
    }
    return QStringLiteral("low");
}

std::optional<BatteryEvent> batteryEvent(const PowerReading& before, const PowerReading& now,
                                         const BatteryLiveActivitySettings& settings)
{
    if (!before.present || !now.present)
        return std::nullopt;
    const auto wasPlugged = isOnExternalPower(before.state);
    const auto isPlugged = isOnExternalPower(now.state);
    if (!wasPlugged || !isPlugged)
        return std::nullopt;
    // Plugging in or out says more than anything that comes with it (a full battery plugged in,
    // a low one unplugged).
    if (!*wasPlugged && *isPlugged)
        return settings.showWhenPluggedIn ? std::optional(BatteryEvent::pluggedIn) : std::nullopt;
    if (*wasPlugged && !*isPlugged)
        return settings.showWhenUnplugged ? std::optional(BatteryEvent::unplugged) : std::nullopt;
    if (*isPlugged && before.state != ChargeState::fullyCharged && now.state == ChargeState::fullyCharged)
        return settings.showWhenFullyCharged ? std::optional(BatteryEvent::fullyCharged) : std::nullopt;
    const double threshold = settings.lowBatteryThreshold;
    if (!*isPlugged && before.percentage >= threshold && now.percentage < threshold)
        return settings.showLowBatteryWarning ? std::optional(BatteryEvent::low) : std::nullopt;
    return std::nullopt;
}

PowerMonitor::PowerMonitor(const Dependencies& dependencies, QObject* parent)
    : QObject(parent)
    , m_deps(dependencies)
    , m_settings(dependencies.settings, Keys::batteryLiveActivitySettings(), this,
                 [this](const BatteryLiveActivitySettings&) { Q_EMIT changed(); })
    , m_shown(LiveActivity::batteryVisualizer, QLatin1StringView(dismissKey), dismissDelaySeconds, dependencies.timers,
              dependencies.liveActivities, [this] {
                  m_event.reset();
                  Q_EMIT changed();
              })
{
    connect(&m_deps.source, &PowerSource::readingChanged, this, &PowerMonitor::read);
    connect(&m_deps.source, &PowerSource::unavailable, this, [](const QString& reason) {
        logLine(u"PowerMonitor", QStringLiteral("No battery is shown: %1.").arg(reason));
    });
    m_deps.source.start();
}

void PowerMonitor::read(const PowerReading& incoming)
{
    PowerReading reading = incoming;
    if (!std::isfinite(reading.percentage))
        reading.percentage = 0;
    reading.percentage = std::clamp(reading.percentage, 0.0, 100.0);
    if (m_reading == reading)
        return;
    const std::optional<PowerReading> before = std::exchange(m_reading, reading);
    if (!reading.present) {
        m_shown.drop();
        return;
    }
    if (before) {
        if (const auto event = batteryEvent(*before, reading, m_settings.get())) {
            announce(*event);
            return;
        }
    }
    Q_EMIT changed();
}

void PowerMonitor::announce(BatteryEvent event)
{
    m_event = event;
    m_shown.raise();
    Q_EMIT changed();
}

std::optional<PowerMonitor::BatteryStatus> PowerMonitor::batteryStatus() const
{
    if (!hasBattery())
        return std::nullopt;
    BatteryStatus status;
    status.level = m_reading->percentage / 100;
    if (isOnExternalPower(m_reading->state))
        status.isCharging = charging();
    return status;
}

int PowerMonitor::percentage() const { return hasBattery() ? int(std::lround(m_reading->percentage)) : 0; }

bool PowerMonitor::charging() const
{
    return hasBattery() &&
           (m_reading->state == ChargeState::charging || m_reading->state == ChargeState::pendingCharge);
}

bool PowerMonitor::pluggedIn() const { return hasBattery() && isOnExternalPower(m_reading->state).value_or(false); }

bool PowerMonitor::low() const
{
    return hasBattery() && !isOnExternalPower(m_reading->state).value_or(false) &&
           m_reading->percentage < m_settings->lowBatteryThreshold;
}

QJsonObject PowerMonitor::state() const
{
    if (!m_reading)
        return {{QStringLiteral("present"), false}};
    return {{QStringLiteral("present"), m_reading->present},
            {QStringLiteral("percentage"), percentage()},
            {QStringLiteral("state"), rawValue(m_reading->state)},
            {QStringLiteral("pluggedIn"), pluggedIn()},
            {QStringLiteral("low"), low()},
            {QStringLiteral("timeToEmpty"), m_reading->timeToEmpty},
            {QStringLiteral("timeToFull"), m_reading->timeToFull},
            {QStringLiteral("event"), m_event ? QJsonValue(announced()) : QJsonValue(QJsonValue::Null)}};
}

} // namespace kelvane
