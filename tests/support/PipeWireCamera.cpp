#include "PipeWireCamera.h"

#include "Polling.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace kelvane::test {

PipeWireCamera::PipeWireCamera(bool withManager, const char* pattern)
{
    m_env.set("XDG_RUNTIME_DIR", m_runtime.path().toUtf8());
    m_env.set("PIPEWIRE_RUNTIME_DIR", m_runtime.path().toUtf8());
    m_server.start(QStringLiteral("pipewire"), {});
    if (!waitUntil([&] { return QFile::exists(m_runtime.filePath(QStringLiteral("pipewire-0"))); }, 10000))
        return;
    m_source.start(QStringLiteral("gst-launch-1.0"),
                   QStringLiteral("-q videotestsrc is-live=true pattern=%1 ! video/x-raw,format=YUY2,width=640,"
                                  "height=480,framerate=30/1 ! pipewiresink mode=provide client-name=TestCam "
                                  "stream-properties=props,media.class=Video/Source,node.description=TestCam")
                       .arg(QLatin1String(pattern))
                       .split(QLatin1Char(' ')));
    if (withManager)
        m_manager.start(QStringLiteral("wireplumber"), {});
}

PipeWireCamera::~PipeWireCamera()
{
    for (QProcess* process : {&m_manager, &m_source, &m_server}) {
        process->terminate();
        if (!process->waitForFinished(3000))
            process->kill();
        process->waitForFinished(3000);
    }
}

bool PipeWireCamera::available()
{
    for (const char* tool : {"pipewire", "wireplumber", "gst-launch-1.0", "pw-dump"})
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
            return false;
    return true;
}

void PipeWireCamera::removeSource()
{
    m_source.terminate();
    m_source.waitForFinished(3000);
}

int PipeWireCamera::nodes(const char* mediaClass)
{
    QProcess dump;
    dump.start(QStringLiteral("pw-dump"), {});
    dump.waitForFinished(5000);
    int count = 0;
    for (const QJsonValue& object : QJsonDocument::fromJson(dump.readAllStandardOutput()).array()) {
        const QJsonObject props = object[QLatin1String("info")][QLatin1String("props")].toObject();
        if (props[QLatin1String("media.class")].toString() == QLatin1String(mediaClass))
            ++count;
    }
    return count;
}

bool PipeWireCamera::offered()
{
    return waitUntil([] { return nodes("Video/Source") > 0; }, 10000);
}

} // namespace kelvane::test
