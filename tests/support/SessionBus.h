#pragma once

#include "ScopedEnvironment.h"

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QString>

namespace kelvane::test {

// A private D-Bus session bus for one test: its own dbus-daemon, whose address is this process's
// DBUS_SESSION_BUS_ADDRESS while it lives, so every program the test starts meets only it. It
// starts services on demand only from the folders it is given, so that what happens to be
// installed on the machine stays out of tests that do not ask for it.
class SessionBus {
public:
    explicit SessionBus(const QStringList& serviceFolders = {});
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    bool isRunning() const { return !m_address.isEmpty(); }
    QString address() const { return m_address; }
    // The daemon's process, for tests that stop it to show nothing waits on it.
    qint64 pid() const { return m_daemon.processId(); }

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_address;
    ScopedEnvironment m_env;
};

} // namespace kelvane::test
