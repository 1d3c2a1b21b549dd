#include "CommandLine.h"

#include <QFileInfo>

namespace kelvane::ctl {

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
                             command == QLatin1StringView("hide") || command == QLatin1StringView("select") ||
                             command == QLatin1StringView("calibrate");
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
    if (command == QLatin1StringView("calibrate") && expect(1, 1))
        return Request{QStringLiteral("Calibrate"), {rest.at(0), screen}};
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
    if (command == QLatin1StringView("calendar")) {
        if (rest.isEmpty())
            return Request{QStringLiteral("Calendar"), {}};
        if (rest.at(0) == QLatin1StringView("sources")) {
            if (rest.size() == 1)
                return Request{QStringLiteral("CalendarSources"), {}};
            if (rest.size() == 3 && rest.at(1) == QLatin1StringView("add"))
                return Request{QStringLiteral("CalendarAddSource"), {QFileInfo(rest.at(2)).absoluteFilePath()}};
            if (rest.size() == 3 && rest.at(1) == QLatin1StringView("remove"))
                return Request{QStringLiteral("CalendarRemoveSource"), {QFileInfo(rest.at(2)).absoluteFilePath()}};
        }
        error = QStringLiteral("use calendar, or calendar sources [add PATH|remove PATH].");
        return std::nullopt;
    }
    if (command == QLatin1StringView("notes")) {
        const QString action = rest.value(0);
        if (action == QLatin1StringView("list") && rest.size() == 1)
            return Request{QStringLiteral("Notes"), {}};
        if (action == QLatin1StringView("show") && rest.size() == 2)
            return Request{QStringLiteral("NoteShow"), {rest.at(1)}};
        if (action == QLatin1StringView("add") && rest.size() >= 2)
            return Request{QStringLiteral("NoteAdd"), {rest.mid(1).join(QLatin1Char(' '))}};
        if (action == QLatin1StringView("remove") && rest.size() == 2)
            return Request{QStringLiteral("NoteRemove"), {rest.at(1)}};
        error = QStringLiteral("use notes list, show ID, add TEXT or remove ID.");
        return std::nullopt;
    }
    if (command == QLatin1StringView("todo")) {
        const QString action = rest.value(0);
        if (action == QLatin1StringView("list") && rest.size() == 1)
            return Request{QStringLiteral("Todos"), {}};
        if (action == QLatin1StringView("add") && rest.size() >= 2)
            return Request{QStringLiteral("TodoAdd"), {rest.mid(1).join(QLatin1Char(' '))}};
        if ((action == QLatin1StringView("done") || action == QLatin1StringView("undo")) && rest.size() == 2)
            return Request{QStringLiteral("TodoSetDone"), {rest.at(1), action == QLatin1StringView("done")}};
        if (action == QLatin1StringView("remove") && rest.size() == 2)
            return Request{QStringLiteral("TodoRemove"), {rest.at(1)}};
        error = QStringLiteral("use todo list, add TEXT, done ID, undo ID or remove ID.");
        return std::nullopt;
    }
    if (command == QLatin1StringView("apps")) {
        const QString action = rest.value(0);
        if (action == QLatin1StringView("list") && rest.size() <= 2)
            return Request{QStringLiteral("Apps"), {rest.value(1)}};
        if ((action == QLatin1StringView("add") || action == QLatin1StringView("remove")) && rest.size() == 2)
            return Request{action == QLatin1StringView("add") ? QStringLiteral("AppAdd") : QStringLiteral("AppRemove"),
                           {rest.at(1)}};
        error = QStringLiteral("use apps list [SEARCH], add ID or remove ID.");
        return std::nullopt;
    }
    if (command == QLatin1StringView("mirror") && rest.isEmpty())
        return Request{QStringLiteral("Mirror"), {}};
    if (command == QLatin1StringView("effects") && rest.isEmpty())
        return Request{QStringLiteral("Effects"), {}};
    if (command == QLatin1StringView("shortcuts")) {
        const QString action = rest.value(0);
        if (action == QLatin1StringView("list") && rest.size() == 1)
            return Request{QStringLiteral("Shortcuts"), {}};
        if (action == QLatin1StringView("run") && rest.size() >= 2) {
            QStringList paths;
            for (const QString& file : rest.mid(2))
                paths << QFileInfo(file).absoluteFilePath();
            return Request{QStringLiteral("ShortcutRun"), {rest.at(1), paths}};
        }
        if (action == QLatin1StringView("stop") && rest.size() == 2)
            return Request{QStringLiteral("ShortcutStop"), {rest.at(1)}};
        error = QStringLiteral("use shortcuts list, run NAME [FILE...] or stop NAME.");
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

} // namespace kelvane::ctl
