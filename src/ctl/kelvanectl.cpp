// kelvanectl: drives the running Kelvane agent from scripts, key bindings and a terminal.

#include "app/Identity.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThread>

#include <cstdio>

using namespace kelvane;

namespace {

const char usage[] = R"(Usage: kelvanectl COMMAND [ARGUMENTS]

Commands:
  state                              every notch: screen, window, notch sizes, mode, hidden, locked, indicator
  open [tuckle|tray] [--screen KEY]  open a notch (the main screen's unless a screen is named)
  close [--screen KEY]               close the notches (every one unless a screen is named)
  hide [--screen KEY]                hide the notches (every one unless a screen is named)
  select tuckle|tray [--screen KEY]  show a tab of an open notch
  settings list                      the names of the settings
  settings get KEY                   a setting's value as JSON
  settings set KEY JSON              write a setting (only a value that fits the setting is written)
  settings reset                     the general settings page's reset
  show-settings [PANE]               bring the settings window forward
  activities                         live activities: raised, shown, and the one the top bar shows
  timer add LABEL DURATION           start a timer (DURATION: 90, 90s, 5m, 1h30m, 1:30); prints its id
  timer list                         every timer: id, label, state, total and remaining seconds
  timer pause|resume|cancel ID       act on a timer (ID: its id or the first characters of it)
  tray add FILE...                   keep files in the tray (copied into its folder); prints how many
  tray list                          the tray: items (singles and stacks) with names and paths
  tray remove NAME                   take a file out of the tray (its copy stays in the tray folder)
  tray paste                         paste the clipboard into the tray (files, else a picture, else text)
  media                              what is playing: track, isPlaying, currentElapsedTime, duration, sources
  media play-pause|next|previous     send a playback command to the player whose track is shown
  media pause-and-dismiss            pause it and take the media activity away
  media pin SOURCE                   follow one source (its clientID, pid, identifier or name)
  media unpin                        let the notch choose the source again
  quit                               end the agent and wait until it has ended
)";

void printLine(std::FILE* stream, const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    if (!text.endsWith(QLatin1Char('\n')))
        std::fputc('\n', stream);
}

int usageError(const QString& message)
{
    printLine(stderr, QStringLiteral("kelvanectl: ") + message);
    std::fputs("Run \"kelvanectl --help\" for the commands.\n", stderr);
    return 2;
}

struct Request {
    QString method;
    QVariantList arguments;
};

// Parses the command line into one call of the agent; an empty method with an error message
// when it does not parse.
std::optional<Request> parse(QStringList args, QString& error)
{
    QString screen;
    const qsizetype screenFlag = args.indexOf(QStringLiteral("--screen"));
    if (screenFlag >= 0) {
        if (screenFlag + 1 >= args.size()) {
            error = QStringLiteral("--screen needs a screen name.");
            return std::nullopt;
        }
        screen = args.at(screenFlag + 1);
        args.remove(screenFlag, 2);
    }
    const QString command = args.value(0);
    const QStringList rest = args.mid(1);
    const auto expect = [&](qsizetype least, qsizetype most) {
        if (rest.size() >= least && rest.size() <= most)
            return true;
        error = QStringLiteral("wrong number of arguments for \"%1\".").arg(command);
        return false;
    };
    const bool takesScreen = command == QLatin1StringView("open") || command == QLatin1StringView("close") ||
                             command == QLatin1StringView("hide") || command == QLatin1StringView("select");
    if (!screen.isEmpty() && !takesScreen) {
        error = QStringLiteral("\"%1\" takes no --screen.").arg(command);
        return std::nullopt;
    }

    if (command == QLatin1StringView("state") && expect(0, 0))
        return Request{QStringLiteral("State"), {}};
    if (command == QLatin1StringView("open") && expect(0, 1))
        return Request{QStringLiteral("Open"), {rest.value(0), screen}};
    if (command == QLatin1StringView("close") && expect(0, 0))
        return Request{QStringLiteral("Close"), {screen}};
    if (command == QLatin1StringView("hide") && expect(0, 0))
        return Request{QStringLiteral("Hide"), {screen}};
    if (command == QLatin1StringView("select") && expect(1, 1))
        return Request{QStringLiteral("Select"), {rest.at(0), screen}};
    if (command == QLatin1StringView("show-settings") && expect(0, 1))
        return Request{QStringLiteral("ShowSettings"), {rest.value(0)}};
    if (command == QLatin1StringView("quit") && expect(0, 0))
        return Request{QStringLiteral("Quit"), {}};
    if (command == QLatin1StringView("activities") && expect(0, 0))
        return Request{QStringLiteral("Activities"), {}};
    if (command == QLatin1StringView("timer") && expect(1, 3)) {
        const QString action = rest.at(0);
        if (action == QLatin1StringView("list") && rest.size() == 1)
            return Request{QStringLiteral("Timers"), {}};
        if (action == QLatin1StringView("add") && rest.size() == 3)
            return Request{QStringLiteral("AddTimer"), {rest.at(1), rest.at(2)}};
        const struct {
            const char* action;
            const char* method;
        } byId[] = {{"pause", "PauseTimer"}, {"resume", "ResumeTimer"}, {"cancel", "CancelTimer"}};
        for (const auto& entry : byId)
            if (action == QLatin1StringView(entry.action) && rest.size() == 2)
                return Request{QString::fromLatin1(entry.method), {rest.at(1)}};
        error = QStringLiteral("use timer add LABEL DURATION, list, or pause|resume|cancel ID.");
        return std::nullopt;
    }
    if (command == QLatin1StringView("tray") && !rest.isEmpty()) {
        const QString action = rest.at(0);
        if (action == QLatin1StringView("list") && rest.size() == 1)
            return Request{QStringLiteral("TrayList"), {}};
        if (action == QLatin1StringView("paste") && rest.size() == 1)
            return Request{QStringLiteral("TrayPaste"), {}};
        if (action == QLatin1StringView("remove") && rest.size() == 2)
            return Request{QStringLiteral("TrayRemove"), {rest.at(1)}};
        if (action == QLatin1StringView("add") && rest.size() > 1) {
            QStringList paths;
            for (const QString& file : rest.mid(1))
                paths << QFileInfo(file).absoluteFilePath();
            return Request{QStringLiteral("TrayAdd"), {paths}};
        }
        error = QStringLiteral("use tray add FILE..., list, remove NAME or paste.");
        return std::nullopt;
    }
    if (command == QLatin1StringView("media") && expect(0, 2)) {
        if (rest.isEmpty())
            return Request{QStringLiteral("Media"), {}};
        return Request{QStringLiteral("MediaCommand"), {rest}};
    }
    if (command == QLatin1StringView("settings") && expect(1, 3)) {
        const QString action = rest.at(0);
        if (action == QLatin1StringView("list") && rest.size() == 1)
            return Request{QStringLiteral("SettingKeys"), {}};
        if (action == QLatin1StringView("get") && rest.size() == 2)
            return Request{QStringLiteral("GetSetting"), {rest.at(1)}};
        if (action == QLatin1StringView("set") && rest.size() == 3)
            return Request{QStringLiteral("SetSetting"), {rest.at(1), rest.at(2)}};
        if (action == QLatin1StringView("reset") && rest.size() == 1)
            return Request{QStringLiteral("ResetSettings"), {}};
        error = QStringLiteral("use settings list, get KEY, set KEY JSON or reset.");
        return std::nullopt;
    }
    if (error.isEmpty())
        error = command.isEmpty() ? QStringLiteral("no command given.")
                                  : QStringLiteral("unknown command \"%1\".").arg(command);
    return std::nullopt;
}

bool agentRunning(QDBusConnection& bus)
{
    return bus.interface()->isServiceRegistered(QLatin1StringView(identity::busName)).value();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || args.first() == QLatin1StringView("--help") || args.first() == QLatin1StringView("-h")) {
        std::fputs(usage, args.isEmpty() ? stderr : stdout);
        return args.isEmpty() ? 2 : 0;
    }
    QString error;
    const auto request = parse(args, error);
    if (!request)
        return usageError(error);

    // Qt's D-Bus types are registered here, on this thread, before the connection's own thread
    // races to do it (a race that otherwise prints "invalid type" warnings now and then).
    QDBusMetaType::typeToSignature(QMetaType::fromType<QDBusVariant>());
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !agentRunning(bus)) {
        printLine(stderr, QStringLiteral("kelvanectl: Kelvane is not running."));
        return 1;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1StringView(identity::busName), QLatin1StringView(identity::objectPath),
        QLatin1StringView(identity::interfaceName), request->method);
    call.setArguments(request->arguments);
    // Adding to the tray answers once the copies are done, which for large files takes a while.
    const bool copies = request->method == QLatin1StringView("TrayAdd") || request->method == QLatin1StringView("TrayPaste");
    const QDBusMessage reply = bus.call(call, QDBus::Block, copies ? 3'600'000 : 10'000);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        printLine(stderr, QStringLiteral("kelvanectl: ") + reply.errorMessage());
        return 1;
    }
    for (const QVariant& value : reply.arguments()) {
        if (value.typeId() == QMetaType::QStringList)
            printLine(stdout, value.toStringList().join(QLatin1Char('\n')));
        else
            printLine(stdout, value.toString());
    }
    if (request->method == QLatin1StringView("Quit")) {
        // Back only once the agent has run its last steps and let go of the bus.
        QDeadlineTimer deadline(10'000);
        while (agentRunning(bus) && !deadline.hasExpired())
            QThread::msleep(20);
        if (agentRunning(bus)) {
            printLine(stderr, QStringLiteral("kelvanectl: Kelvane is still running."));
            return 1;
        }
    }
    return 0;
}
