#include "platform/linux/DesktopColorScheme.h"
#include "platform/linux/DesktopSharing.h"

#include "core/Log.h"

#include "support/Polling.h"
#include "support/SessionBus.h"

#include <QDBusConnectionInterface>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

using namespace kelvane;
using kelvane::test::SessionBus;
using kelvane::test::waitUntil;

namespace {
// A desktop service stood in for by python-dbusmock on the test's bus, shaped through its mock
// interface: methods added to objects, and the calls they received read back.
struct MockService {
    QProcess process;
    QString name;

    MockService(const QString& service, const QString& path, const QString& interface)
        : name(service)
    {
        process.start("/usr/bin/python3", {"-m", "dbusmock", service, path, interface});
        // The test's own bus, which changes from case to case, not the process's first one.
        const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
        QDBusConnection bus = QDBusConnection::connectToBus(address, "mock " + address);
        EXPECT_TRUE(waitUntil([&] { return bus.interface()->isServiceRegistered(service).value(); })) << service.toStdString();
    }
    ~MockService()
    {
        process.terminate();
        process.waitForFinished();
    }
    // A call to the mock interface of the object at `path`, through busctl, answered as JSON.
    QJsonValue mock(const QString& path, const QString& method, const QStringList& signatureAndArguments = {}) const
    {
        QProcess busctl;
        busctl.start("busctl", QStringList{"--address=" + qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), "--json=short", "call",
                                           name, path, "org.freedesktop.DBus.Mock", method} +
                                   signatureAndArguments);
        busctl.waitForFinished();
        EXPECT_EQ(busctl.exitCode(), 0) << busctl.readAllStandardError().toStdString();
        return QJsonDocument::fromJson(busctl.readAllStandardOutput()).object().value("data");
    }
    // Each call an object received: its method and its arguments, as JSON text.
    QStringList calls(const QString& path) const
    {
        QStringList seen;
        for (const QJsonValue& call : mock(path, "GetCalls").toArray().at(0).toArray()) {
            const QJsonArray record = call.toArray();
            QJsonArray arguments;
            for (const QJsonValue& argument : record.at(2).toArray())
                arguments.append(argument.toObject().value("data"));
            seen << record.at(1).toString() + QJsonDocument(arguments).toJson(QJsonDocument::Compact);
        }
        return seen;
    }
};
} // namespace

// The files are sent by the service that runs, named as people know it, over D-Bus: KDE Connect to
// its first reachable paired device, GSConnect (GNOME) through its device's "shareFile" action;
// with none running one line says so and the files are let go at once. What was handed over is
// kept until the end, as the service reads it when the phone takes it.
TEST(DesktopSharing, SendsThroughTheServiceThatRunsAndKeepsTheFilesMeanwhile)
{
    const QString file = QUrl::fromLocalFile("/tmp/photo one.jpg").toString(QUrl::FullyEncoded);
    const QString gsDevice = "/org/gnome/Shell/Extensions/GSConnect/Device/abc";
    const struct {
        const char* name;
        std::function<std::unique_ptr<MockService>()> start;
        QString service;
        QString path;
        QString call;
    } cases[] = {
        {"none", [] { return nullptr; }, "", "", ""},
        {"KDE Connect",
         [] {
             auto mock = std::make_unique<MockService>("org.kde.kdeconnect", "/modules/kdeconnect", "org.kde.kdeconnect.daemon");
             mock->mock("/modules/kdeconnect", "AddMethod", {"sssss", "org.kde.kdeconnect.daemon", "devices", "bb", "as", "ret = ['dev1'] if args[0] and args[1] else []"});
             mock->mock("/modules/kdeconnect", "AddObject", {"ssa{sv}a(ssss)", "/modules/kdeconnect/devices/dev1/share",
                                                             "org.kde.kdeconnect.device.share", "0", "1", "shareUrl", "s", "", ""});
             return mock;
         },
         "KDE Connect", "/modules/kdeconnect/devices/dev1/share", "shareUrl[\"" + file + "\"]"},
        {"GSConnect",
         [gsDevice] {
             auto mock = std::make_unique<MockService>("org.gnome.Shell.Extensions.GSConnect", "/org/gnome/Shell/Extensions/GSConnect",
                                                       "org.freedesktop.DBus.ObjectManager");
             mock->mock("/org/gnome/Shell/Extensions/GSConnect", "AddMethod",
                        {"sssss", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", "", "a{oa{sa{sv}}}",
                         "ret = {'/org/gnome/Shell/Extensions/GSConnect/Device/off': {'org.gnome.Shell.Extensions.GSConnect.Device': "
                         "{'Connected': False, 'Paired': True}}, '" + gsDevice + "': {'org.gnome.Shell.Extensions.GSConnect.Device': "
                         "{'Connected': True, 'Paired': True}}}"});
             mock->mock("/org/gnome/Shell/Extensions/GSConnect", "AddObject",
                        {"ssa{sv}a(ssss)", gsDevice, "org.gtk.Actions", "0", "1", "Activate", "sava{sv}", "", ""});
             return mock;
         },
         "GSConnect", gsDevice, "Activate[\"shareFile\",[{\"data\":[\"" + file + "\",false],\"type\":\"(sb)\"}],{}]"},
    };
    for (const auto& c : cases) {
        SessionBus bus;
        const auto mock = c.start();
        auto sharing = std::make_unique<DesktopSharing>(QDBusConnection::connectToBus(bus.address(), c.name));
        int changes = 0;
        sharing->serviceChanged.set([&] { ++changes; });
        EXPECT_TRUE(waitUntil([&] { return sharing->serviceName() == c.service; }, c.service.isEmpty() ? 200 : 5000)) << c.name;
        EXPECT_EQ(changes, c.service.isEmpty() ? 0 : 1) << c.name;

        LogCapture log;
        bool finished = false;
        sharing->perform({QUrl(file)}, [&] { finished = true; });
        if (c.service.isEmpty()) {
            EXPECT_EQ(log.lines(), QStringList{"[Sharing] No sharing service is available (KDE Connect or GSConnect is not running); 1 file(s) not sent."});
            EXPECT_TRUE(finished);
        } else {
            EXPECT_TRUE(waitUntil([&] { return mock->calls(c.path) == QStringList{c.call}; })) << mock->calls(c.path).join('\n').toStdString();
            EXPECT_TRUE(log.lines().isEmpty()) << log.lines().join('\n').toStdString();
            EXPECT_FALSE(finished) << c.name;
            sharing.reset();
            EXPECT_TRUE(finished) << c.name;
        }
        QDBusConnection::disconnectFromBus(c.name);
    }
}

// Previews open in GNOME's previewer while it runs, asked without waiting for its answer.
TEST(DesktopSharing, PreviewsInTheDesktopsPreviewerWhileItRuns)
{
    SessionBus bus;
    DesktopSharing sharing(QDBusConnection::connectToBus(bus.address(), "preview"));
    EXPECT_FALSE(sharing.isAvailable());
    int changes = 0;
    sharing.availabilityChanged.set([&] { ++changes; });
    {
        MockService previewer("org.gnome.NautilusPreviewer", "/org/gnome/NautilusPreviewer", "org.gnome.NautilusPreviewer");
        previewer.mock("/org/gnome/NautilusPreviewer", "AddMethod", {"sssss", "org.gnome.NautilusPreviewer", "ShowFile", "sib", "", ""});
        ASSERT_TRUE(waitUntil([&] { return sharing.isAvailable(); }));
        sharing.toggle({QUrl::fromLocalFile("/tmp/a.pdf")});
        EXPECT_TRUE(waitUntil([&] { return previewer.calls("/org/gnome/NautilusPreviewer") == QStringList{"ShowFile[\"file:///tmp/a.pdf\",0,true]"}; }))
            << previewer.calls("/org/gnome/NautilusPreviewer").join('\n').toStdString();
    }
    EXPECT_TRUE(waitUntil([&] { return !sharing.isAvailable(); }));
    EXPECT_EQ(changes, 2);
}

// The desktop's light or dark preference, read from the portal without waiting and followed as
// the user changes it; with no portal, light and one line.
TEST(DesktopColorScheme, FollowsTheDesktopsPreferenceThroughThePortal)
{
    SessionBus bus;
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    {
        LogCapture log;
        QDBusConnection connection = QDBusConnection::connectToBus(address, "no portal");
        DesktopColorScheme scheme(connection);
        EXPECT_TRUE(waitUntil([&] { return !log.lines().isEmpty(); }));
        EXPECT_EQ(log.lines(), QStringList{"[DesktopColorScheme] No desktop appearance setting "
                                           "(org.freedesktop.DBus.Error.ServiceUnknown): light colours."});
        EXPECT_FALSE(scheme.prefersDark());
    }

    MockService portal("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                       "org.freedesktop.portal.Settings");
    // As the portal answers: the value in a variant within the reply's variant.
    portal.mock("/org/freedesktop/portal/desktop", "AddMethod",
                {"sssss", "", "Read", "ss", "v", "ret = dbus.UInt32(1, variant_level=2)"});
    QDBusConnection connection = QDBusConnection::connectToBus(address, "portal");
    DesktopColorScheme scheme(connection);
    QSignalSpy changed(&scheme, &DesktopColorScheme::changed);
    EXPECT_TRUE(waitUntil([&] { return scheme.prefersDark(); }));

    const struct {
        const char* group;
        const char* value;
        bool dark;
    } changes[] = {{"org.freedesktop.appearance", "2", false}, {"org.gnome.desktop.interface", "1", false},
                   {"org.freedesktop.appearance", "1", true}, {"org.freedesktop.appearance", "0", false}};
    for (const auto& change : changes) {
        portal.mock("/org/freedesktop/portal/desktop", "EmitSignal",
                    {"sssav", "org.freedesktop.portal.Settings", "SettingChanged", "ssv", "3", "s", change.group,
                     "s", "color-scheme", "u", change.value});
        EXPECT_TRUE(waitUntil([&] { return scheme.prefersDark() == change.dark; })) << change.group << change.value;
        QTest::qWait(100);
        EXPECT_EQ(scheme.prefersDark(), change.dark) << change.group << change.value;
    }
    EXPECT_EQ(changed.count(), 4) << "the first reading, then each change of the appearance";
}
