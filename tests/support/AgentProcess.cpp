#include "AgentProcess.h"

#include "Polling.h"
#include "XvfbServer.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

namespace kelvane::test {

QString binary(const char* name)
{
    return QFileInfo(qEnvironmentVariable("KELVANE_BINARY")).dir().filePath("../ctl/" + QString(name));
}

Result run(const QString& program, const QStringList& arguments, int timeoutMs)
{
    QProcess process;
    process.start(program, arguments);
    Result result;
    if (!process.waitForFinished(timeoutMs))
        return result;
    result.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QString screenshot(const QString& name, int settleMs)
{
    QThread::msleep(static_cast<unsigned long>(settleMs));
    QDir().mkpath(QStringLiteral(KELVANE_ARTIFACTS));
    const QString path = QStringLiteral(KELVANE_ARTIFACTS "/") + name + QStringLiteral(".png");
    XvfbServer::current()->run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), path});
    return path;
}

Result ctl(const QStringList& arguments) { return run(binary("kelvanectl"), arguments); }

QJsonObject ctlJson(const QStringList& arguments)
{
    return QJsonDocument::fromJson(ctl(arguments).out.toUtf8()).object();
}

QStringList notchWindows() { return XvfbServer::current()->windowGeometries("Kelvane Notch"); }

QStringList trayNames()
{
    QStringList names;
    for (const auto& item : ctlJson({"tray", "list"})["items"].toArray())
        for (const auto& file : item.toObject()["files"].toArray())
            names << file.toObject()["name"].toString();
    return names;
}

QJsonObject notch(const QString& screen)
{
    for (const auto& value : ctlJson({"state"})["notches"].toArray())
        if (value.toObject()["screen"].toString() == screen)
            return value.toObject();
    return {};
}

ComposedDesktop::ComposedDesktop()
{
    compositor.start(QStringLiteral("xcompmgr"), {QStringLiteral("-n")});
    compositor.waitForStarted();
}

ComposedDesktop::~ComposedDesktop()
{
    compositor.kill();
    compositor.waitForFinished();
}

RunningAgent::RunningAgent(bool firstRun)
{
    if (!firstRun) {
        const QString config = qEnvironmentVariable("XDG_CONFIG_HOME", QDir::homePath() + QStringLiteral("/.config"));
        QSettings conf(config + QStringLiteral("/kelvane/kelvane.conf"), QSettings::IniFormat);
        if (conf.status() == QSettings::NoError && !conf.contains(QStringLiteral("intro")))
            conf.setValue(QStringLiteral("intro"), false);
    }
    process.setProgram(qEnvironmentVariable("KELVANE_BINARY"));
    process.start();
}

RunningAgent::~RunningAgent()
{
    process.terminate();
    process.waitForFinished(5000);
}

QString RunningAgent::readOutput()
{
    output += QString::fromUtf8(process.readAllStandardOutput());
    return output;
}

bool RunningAgent::waitForNotches(int count)
{
    return waitUntil([&] { return notchWindows().size() == count; }, 10000);
}

} // namespace kelvane::test
