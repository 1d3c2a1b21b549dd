#pragma once

#include <QDateTime>
#include <QObject>
#include <QUuid>

#include <optional>

namespace kelvane {

// One labelled countdown. Its timing is changed by the timers store only; views observe it.
class TimerEntry : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString id READ idText CONSTANT)
    Q_PROPERTY(QString label READ label CONSTANT)
    Q_PROPERTY(qint64 totalSeconds READ totalSeconds CONSTANT)
    Q_PROPERTY(qint64 remainingSeconds READ remainingSeconds NOTIFY remainingSecondsChanged)
    Q_PROPERTY(State state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString stateName READ stateName NOTIFY stateChanged)
public:
    enum class State { running, paused, expired };
    Q_ENUM(State)

    TimerEntry(QUuid id, QString label, qint64 totalSeconds, QObject* parent = nullptr);

    QUuid id() const { return m_id; }
    // The identity as it is stored and typed: upper-case hexadecimal groups, no braces.
    QString idText() const;
    const QString& label() const { return m_label; }
    qint64 totalSeconds() const { return m_totalSeconds; }
    qint64 remainingSeconds() const { return m_remainingSeconds; }
    State state() const { return m_state; }
    QString stateName() const;
    const std::optional<QDateTime>& startedAt() const { return m_startedAt; }
    const std::optional<QDateTime>& expiresAt() const { return m_expiresAt; }

    void setRemainingSeconds(qint64 seconds);
    void setState(State state);
    void setStartedAt(std::optional<QDateTime> date) { m_startedAt = std::move(date); }
    void setExpiresAt(std::optional<QDateTime> date) { m_expiresAt = std::move(date); }

Q_SIGNALS:
    void remainingSecondsChanged();
    void stateChanged();

private:
    QUuid m_id;
    QString m_label;
    qint64 m_totalSeconds;
    qint64 m_remainingSeconds;
    State m_state = State::paused;
    std::optional<QDateTime> m_startedAt;
    std::optional<QDateTime> m_expiresAt;
};

} // namespace kelvane
