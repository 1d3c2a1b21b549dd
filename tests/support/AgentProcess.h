#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace kelvane::test {

// A program's whole run: exit status (-1 when it crashed or hung), standard output and error.
struct Result {
    int status = -1;
    QString out;
    QString err;
};

// A program built beside the agent ("kelvanectl").
QString binary(const char* name);
Result run(const QString& program, const QStringList& arguments, int timeoutMs = 15000);
Result ctl(const QStringList& arguments);
// `kelvanectl` output read as a JSON object.
QJsonObject ctlJson(const QStringList& arguments);

QStringList notchWindows();
// The names of the files in the running agent's tray, in order, from `kelvanectl tray list`.
QStringList trayNames();
// The state of the notch on the named screen, from `kelvanectl state`.
QJsonObject notch(const QString& screen);

// The whole virtual screen once what moves has had `settleMs` to come to rest, kept as NAME.png
// among the build's artifacts; the picture's path.
QString screenshot(const QString& name, int settleMs = 400);

// The desktop as a person sees it: a compositor on the test's X server, so that what the notch
// leaves transparent shows what lies beneath it instead of black.
struct ComposedDesktop {
    QProcess compositor;
    ComposedDesktop();
    ~ComposedDesktop();
};

// The agent as a user starts it, on the test's own session bus and X server.
struct RunningAgent {
    QProcess process;
    QString output;
    // Unless `firstRun`, the user has seen the introduction already (written to the preferences
    // file when it can be read and says nothing of it).
    explicit RunningAgent(bool firstRun = false);
    ~RunningAgent();
    QString readOutput();
    bool waitForNotches(int count);
};

} // namespace kelvane::test
