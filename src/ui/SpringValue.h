#pragma once

#include "core/Spring.h"

#include <QAbstractAnimation>
#include <QObject>

namespace kelvane {

// A number that follows its target along a spring: views bind a size to `value` and set `target`.
// A new target mid-flight keeps the current velocity, so interrupted animations stay smooth.
// The first target is taken at once. Nothing ticks once the value has settled.
class SpringValue : public QObject {
    Q_OBJECT
    Q_PROPERTY(double target READ target WRITE setTarget NOTIFY targetChanged)
    Q_PROPERTY(double value READ value NOTIFY valueChanged)
    Q_PROPERTY(kelvane::Spring spring READ spring WRITE setSpring NOTIFY springChanged)
    Q_PROPERTY(bool running READ running NOTIFY runningChanged)
public:
    explicit SpringValue(QObject* parent = nullptr);

    double target() const { return m_target; }
    void setTarget(double target);
    double value() const { return m_value; }
    Spring spring() const { return m_spring; }
    void setSpring(const Spring& spring);
    bool running() const;

Q_SIGNALS:
    void targetChanged();
    void valueChanged();
    void springChanged();
    void runningChanged();

private:
    class Driver : public QAbstractAnimation {
    public:
        explicit Driver(SpringValue& owner)
            : m_owner(owner)
        {
        }
        int duration() const override { return -1; }

    protected:
        void updateCurrentTime(int ms) override { m_owner.step(ms / 1000.0); }

    private:
        SpringValue& m_owner;
    };

    void step(double t);
    void setValue(double value);

    Driver m_driver{*this};
    Spring m_spring = Springs::animation;
    Spring m_running = Springs::animation;
    double m_target = 0;
    double m_value = 0;
    double m_startDisplacement = 0;
    double m_startVelocity = 0;
    double m_settle = 0;
    double m_elapsed = 0;
    bool m_hasTarget = false;
};

} // namespace kelvane
