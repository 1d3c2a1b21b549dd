// kelvanectl: drives the running Kelvane agent from scripts, key bindings and a terminal.

#include "CommandLine.h"

#include "app/Identity.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QThread>

#include <cstdio>

using namespace kelvane;

namespace {

const char usage[] = R"(Usage: kelvanectl COMMAND [ARGUMENTS]

Commands:
  state                              every notch: screen, window, notch sizes, mode, hidden, locked,
                                     full screen, shown, indicator
  open [tuckle|tray] [--screen KEY]  open a notch (the main screen's unless a screen is named)
  close [--screen KEY]               close the notches (every one unless a screen is named)
  hide [--screen KEY]                hide the notches (every one unless a screen is named)
  select tuckle|tray [--screen KEY]  show a tab of an open notch
  calibrate width|height|done [--screen KEY]
                                     fit the notch's outline to the camera housing (drag or arrow
                                     keys, Return when done)
  settings list                      the names of the settings
  settings get KEY                   a setting's value as JSON
  settings set KEY JSON              write a setting (only a value that fits the setting is written)
  settings reset                     the general settings page's reset
  show-settings [PANE]               bring the settings window forward
  activities                         live activities: raised, shown, the one the top bar shows,
                                     the battery and Bluetooth devices
  calendar                           the events the calendar widget lists: calendar, title, start,
                                     end, allDay, location, meetingLink
  calendar sources                   the iCalendar files and folders read, and every calendar
  calendar sources add|remove PATH   read an iCalendar file or folder as calendars, or stop
  notes list                         every note: id, title, code mode and language, pinned, modified
  notes show ID                      one note with its text
  notes add TEXT                     add a note (its first line is its title); prints its id
  notes remove ID                    delete a note
  todo list                          the to-dos in their order: id, text, done
  todo add TEXT                      add a to-do at the end; prints its id
  todo done|undo ID                  tick a to-do, or untick it
  todo remove ID                     delete a to-do
  apps list [SEARCH]                 the quick apps' ids in order, and the installed applications (matching SEARCH) with id, name, chosen
  apps add|remove ID                 put an application (its desktop entry id) on the quick apps row, or take it off
  mirror                             the camera mirror: state, message, device, open, and the cameras
  effects                            the media effect, whether it hears the sound, its bars; the desktop
                                     picture (its source, size, colours) and what the glass bends
  shortcuts list                     the programs in the shortcuts folder: name, path, executable, shown, state, exitStatus, lastLine
  shortcuts run NAME [FILE...]       run one with these files (none: the files selected in the tray)
  shortcuts stop NAME                ask a running shortcut to end, and end it if it does not
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

bool agentRunning(QDBusConnection& bus)
{
    return bus.interface()->isServiceRegistered(QLatin1StringView(identity::busName)).value();
}

// Running, or started now by the bus when it knows how (the installed service file).
bool agentStarted(QDBusConnection& bus)
{
    const QString name = QLatin1StringView(identity::busName);
    if (agentRunning(bus))
        return true;
    if (!bus.interface()->activatableServiceNames().value().contains(name))
        return false;
    return bus.interface()->startService(name).isValid();
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
    if (args.first() == QLatin1StringView("--version") || args.first() == QLatin1StringView("-v")) {
        std::printf("kelvanectl %s\n", identity::version);
        return 0;
    }
    QString error;
    const auto request = ctl::parse(args, error);
    if (!request)
        return usageError(error);

    // Qt's D-Bus types are registered here, on this thread, before the connection's own thread
    // races to do it (a race that otherwise prints "invalid type" warnings now and then).
    QDBusMetaType::typeToSignature(QMetaType::fromType<QDBusVariant>());
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !agentStarted(bus)) {
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
