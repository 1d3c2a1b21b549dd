#include "TimerEntry.h"

#include <QMetaEnum>

namespace kelvane {

TimerEntry::TimerEntry(QUuid id, QString label, qint64 totalSeconds, QObject* parent)
    : QObject(parent)
    , m_id(id)
    , m_label(std::move(label))
    , m_totalSeconds(totalSeconds)
    , m_remainingSeconds(totalSeconds)
{
}

QString TimerEntry::idText() const { return m_id.toString(QUuid::WithoutBraces).toUpper(); }

QString TimerEntry::stateName() const
{
    return QString::fromLatin1(QMetaEnum::fromType<State>().valueToKey(static_cast<int>(m_state)));
}

void TimerEntry::setRemainingSeconds(qint64 seconds)
{
    if (seconds == m_remainingSeconds)
        return;
    m_remainingSeconds = seconds;
    Q_EMIT remainingSecondsChanged();
}

void TimerEntry::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

} // namespace kelvane
