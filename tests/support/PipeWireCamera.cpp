#include "PipeWireCamera.h"

#include "Polling.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

#include <csignal>
#include <sys/prctl.h>

namespace kelvane::test {

PipeWireCamera::PipeWireCamera(bool withManager)
{
    m_env.set("XDG_RUNTIME_DIR", m_runtime.path().toUtf8());
    m_env.set("PIPEWIRE_RUNTIME_DIR", m_runtime.path().toUtf8());
    // A test that crashes takes its camera with it.
    for (QProcess* process : {&m_server, &m_manager})
        process->setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    m_server.start(QStringLiteral("pipewire"), {});
    if (!waitUntil([&] { return QFile::exists(m_runtime.filePath(QStringLiteral("pipewire-0"))); }, 10000))
        return;
    // The server's own test picture (colour bars over moving snow), made inside the server so that
    // readers come and go as they do on a real camera. GStreamer's sink in "provide" mode can stall
    // for good when a reader leaves while it waits for a buffer, and a busy machine makes that likely.
    QProcess create;
    create.start(QStringLiteral("pw-cli"),
                 {QStringLiteral("create-node"), QStringLiteral("spa-node-factory"),
                  QStringLiteral("factory.name=videotestsrc"), QStringLiteral("library.name=videotestsrc/libspa-videotestsrc"),
                  QStringLiteral("node.name=TestCam"), QStringLiteral("node.description=TestCam"),
                  QStringLiteral("media.class=Video/Source"), QStringLiteral("object.linger=true")});
    create.waitForFinished(10000);
    if (withManager)
        m_manager.start(QStringLiteral("wireplumber"), {});
}

PipeWireCamera::~PipeWireCamera()
{
    for (QProcess* process : {&m_manager, &m_server}) {
        process->terminate();
        if (!process->waitForFinished(3000))
            process->kill();
        process->waitForFinished(3000);
    }
}

bool PipeWireCamera::available()
{
    for (const char* tool : {"pipewire", "wireplumber", "pw-cli", "pw-dump"})
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
            return false;
    return true;
}

void PipeWireCamera::removeSource()
{
    for (const QJsonValue& object : dump()) {
        if (object[QLatin1String("info")][QLatin1String("props")][QLatin1String("node.name")].toString() == QLatin1String("TestCam"))
            QProcess::execute(QStringLiteral("pw-cli"), {QStringLiteral("destroy"), QString::number(object[QLatin1String("id")].toInt())});
    }
}

QJsonArray PipeWireCamera::dump()
{
    QProcess dump;
    dump.start(QStringLiteral("pw-dump"), {});
    dump.waitForFinished(5000);
    return QJsonDocument::fromJson(dump.readAllStandardOutput()).array();
}

int PipeWireCamera::nodes(const char* mediaClass)
{
    int count = 0;
    for (const QJsonValue& object : dump()) {
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
