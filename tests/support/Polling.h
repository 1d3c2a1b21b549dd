#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

namespace kelvane::test {

// For peers that answer in their own time (an X server, a file watch): processes events until the
// condition holds or the bound runs out. Never used for the agent's own timers, which run on
// virtual time.
template <class Condition>
bool waitUntil(Condition condition, int timeoutMs = 5000)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    return true;
}

} // namespace kelvane::test
