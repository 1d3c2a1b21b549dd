#pragma once

#include "ScopedEnvironment.h"

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace kelvane::test {

// A private stand-in for the system bus: its own dbus-daemon with the system bus's type, whose
// address is DBUS_SYSTEM_BUS_ADDRESS while it lives, and system services mocked on it by
// python-dbusmock from their templates ("upower", "bluez5"), which answer as the daemons do.
class SystemBus {
public:
    SystemBus();
    ~SystemBus();
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;

    bool isRunning() const { return !m_address.isEmpty(); }
    QString address() const { return m_address; }
    // A connection of the test's own to the bus.
    QDBusConnection connection() const;

    // Starts a template's mock and waits until it owns its name.
    bool startMock(const QString& templateName, const QString& service, const QString& parameters = {});
    void stopMocks();
    // `busctl call` on the bus with these arguments (service, path, interface, method, signature,
    // values), waited for; false, with busctl's error printed, when it fails.
    bool call(const QStringList& arguments) const;

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_address;
    QString m_connectionName;
    std::vector<std::unique_ptr<QProcess>> m_mocks;
    ScopedEnvironment m_env;
};

} // namespace kelvane::test
