#include "SpringValue.h"

namespace kelvane {

SpringValue::SpringValue(QObject* parent)
    : QObject(parent)
{
    connect(&m_driver, &QAbstractAnimation::stateChanged, this, &SpringValue::runningChanged);
}

bool SpringValue::running() const { return m_driver.state() == QAbstractAnimation::Running; }

void SpringValue::setSpring(const Spring& spring)
{
    if (m_spring == spring)
        return;
    m_spring = spring;
    Q_EMIT springChanged();
}

void SpringValue::setTarget(double target)
{
    if (m_hasTarget && target == m_target)
        return;
    const double velocity =
        running() ? m_running.velocity(m_elapsed, m_startDisplacement, m_startVelocity) : 0.0;
    m_target = target;
    Q_EMIT targetChanged();
    if (!m_hasTarget) {
        m_hasTarget = true;
        setValue(target);
        return;
    }
    m_running = m_spring;
    m_startDisplacement = m_value - target;
    m_startVelocity = velocity;
    m_settle = m_running.settlingTime(0.002);
    m_elapsed = 0;
    m_driver.stop();
    m_driver.start();
}

void SpringValue::step(double t)
{
    m_elapsed = t;
    if (t >= m_settle) {
        setValue(m_target);
        m_driver.stop();
        return;
    }
    setValue(m_target + m_running.displacement(t, m_startDisplacement, m_startVelocity));
}

void SpringValue::setValue(double value)
{
    if (m_value == value)
        return;
    m_value = value;
    Q_EMIT valueChanged();
}

} // namespace kelvane
