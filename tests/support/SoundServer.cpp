#include "SoundServer.h"

#include "AgentProcess.h"
#include "Polling.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>

namespace kelvane::test {

SoundServer::SoundServer(const QString& runtime)
{
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    m_env.set("XDG_RUNTIME_DIR", runtime.toUtf8());
    m_env.set("PULSE_SERVER", ("unix:" + runtime + "/pulse/native").toUtf8());
    m_server.start("pulseaudio", {"--daemonize=no", "-n", "--exit-idle-time=-1", "--disallow-exit", "-L",
                                  "module-null-sink", "-L", "module-native-protocol-unix"});
}

SoundServer::~SoundServer()
{
    m_server.kill();
    m_server.waitForFinished(3000);
}

bool SoundServer::available()
{
    for (const char* program : {"pulseaudio", "pactl", "paplay"})
        if (QStandardPaths::findExecutable(QString::fromLatin1(program)).isEmpty())
            return false;
    return true;
}

bool SoundServer::ready()
{
    return waitUntil([] { return run("pactl", {"info"}).status == 0; }, 10000);
}

double SoundServer::level()
{
    const auto match = QRegularExpression("(\\d+)%").match(run("pactl", {"get-sink-volume", "@DEFAULT_SINK@"}).out);
    return match.hasMatch() ? match.captured(1).toDouble() / 100 : -1;
}

int SoundServer::recordingStreams()
{
    return int(run("pactl", {"list", "short", "source-outputs"}).out.split(u'\n', Qt::SkipEmptyParts).size());
}

} // namespace kelvane::test
