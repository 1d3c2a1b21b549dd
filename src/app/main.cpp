#include "AppDelegate.h"
#include "Identity.h"
#include "LegacyMigration.h"
#include "ScriptingService.h"
#include "SingleInstance.h"

#include "core/Log.h"
#include "platform/linux/QuitSignals.h"
#include "platform/linux/SystemLog.h"
#include "ui/Renderer.h"

#include <QGuiApplication>
#include <QUrl>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

using namespace kelvane;

namespace {
AppDelegate* s_delegate = nullptr;

// When the X server goes away with the session, Qt ends the process with exit(): the
// termination sequence still runs, from here.
void terminateAtExit()
{
    if (s_delegate)
        s_delegate->applicationWillTerminate();
}

// What the command line asks that is answered without starting the agent: its version, its help,
// or an option it does not know. No display, bus or saved file is touched for these.
std::optional<int> answerWithoutStarting(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        if (std::strcmp(argument, "--version") == 0 || std::strcmp(argument, "-v") == 0) {
            std::printf("Kelvane %s\n", identity::version);
            return 0;
        }
        const bool help = std::strcmp(argument, "--help") == 0 || std::strcmp(argument, "-h") == 0;
        if (help || (argument[0] == '-' && argument[1] != '\0')) {
            if (!help)
                std::fprintf(stderr, "kelvane: unknown option %s\n", argument);
            std::fprintf(help ? stdout : stderr,
                         "Usage: kelvane [OPTION]\n"
                         "Live activities, widgets and a file tray in a notch at the top of every screen.\n"
                         "\n"
                         "Started while Kelvane already runs, it brings the running one's settings forward.\n"
                         "\n"
                         "  -h, --help     show this help and end\n"
                         "  -v, --version  show the version and end\n"
                         "\n"
                         "The running Kelvane is driven with kelvanectl (see kelvanectl --help).\n");
            return help ? 0 : 2;
        }
    }
    return std::nullopt;
}
} // namespace

int main(int argc, char** argv)
{
    if (const std::optional<int> status = answerWithoutStarting(argc, argv))
        return *status;

    // Windows above the others at a chosen place need X11 (also through XWayland); without an X
    // server the agent still runs, its notches kept off screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb;offscreen");
    // Cameras come through Qt Multimedia's GStreamer back end, which the camera list is checked against.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "gstreamer");
    // Drawn in software, the notch mostly repaints small areas often (the sound's bars, thirty
    // times a second). Handed over in shared memory, each frame costs a round trip to the X
    // server before the next one may be drawn; sent with the request, a small area costs one
    // write. Measured with the bars moving: a third less processor time; a panel opening and
    // closing over and over: a twentieth more.
    if (qEnvironmentVariableIsEmpty("QT_XCB_NO_MITSHM"))
        qputenv("QT_XCB_NO_MITSHM", "1");

    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("kelvane"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Kelvane"));
    QGuiApplication::setDesktopFileName(QLatin1StringView(identity::bundleIdentifier));
    QGuiApplication::setApplicationVersion(QLatin1StringView(identity::version));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = app.arguments().mid(1);

    // One agent per session: a second launch hands its request to the first and ends, before it
    // reads or writes anything of its own.
    ScriptingService service;
    if (SingleInstance::claim(&service) == SingleInstance::Role::secondary)
        return SingleInstance::handOver(arguments);

    migrateLegacyBundleIdentifier(QLatin1StringView(identity::bundleIdentifier));

    installSyslogSink();
    if (QGuiApplication::platformName() == QLatin1StringView("offscreen"))
        logLine(u"AppDelegate", QStringLiteral("No X display is available; the notches are kept off screen."));
    const Renderer renderer = Renderer::choose();
    Renderer::use(renderer);
    logLine(u"Renderer", renderer.description);

    AppDelegate delegate;
    s_delegate = &delegate;
    std::atexit(terminateAtExit);
    service.setDelegate(&delegate);

    QuitSignals quitSignals;
    QObject::connect(&quitSignals, &QuitSignals::received, &app, [](int signal) {
        logLine(u"AppDelegate", QStringLiteral("%1 received; quitting.").arg(QuitSignals::name(signal)));
        QCoreApplication::quit();
    });

    delegate.applicationDidFinishLaunching();
    if (!arguments.isEmpty()) {
        QList<QUrl> urls;
        for (const QString& argument : arguments)
            urls << QUrl::fromUserInput(argument, QString(), QUrl::AssumeLocalFile);
        delegate.openUrls(urls);
    }

    const int status = QGuiApplication::exec();
    delegate.applicationWillTerminate();
    s_delegate = nullptr;
    return status;
}
