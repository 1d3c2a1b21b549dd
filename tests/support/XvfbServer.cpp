#include "XvfbServer.h"

#include <QProcessEnvironment>
#include <QRegularExpression>


namespace kelvane::test {

namespace {
XvfbServer* s_current = nullptr;
}

XvfbServer::XvfbServer(int width, int height)
    : m_width(width)
    , m_height(height)
{
}

XvfbServer::~XvfbServer() { stop(); }

void XvfbServer::stop()
{
    m_process.terminate();
    m_process.waitForFinished(5000);
}

bool XvfbServer::start()
{
    // Xvfb picks a free display and writes its number to the given descriptor once it accepts
    // connections.
    const QString screen = QStringLiteral("%1x%2x24").arg(m_width).arg(m_height);
    m_process.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                             QStringLiteral("-screen"), QStringLiteral("0"), screen,
                                             QStringLiteral("-noreset"), QStringLiteral("-nolisten"),
                                             QStringLiteral("tcp")});
    QByteArray number;
    while (!number.contains('\n') && m_process.waitForReadyRead(15000))
        number += m_process.readAllStandardOutput();
    number = number.trimmed();
    if (number.isEmpty())
        return false;
    m_display = QStringLiteral(":") + QString::fromLatin1(number);
    return true;
}

int XvfbServer::run(const QString& program, const QStringList& arguments, QString* output) const
{
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), m_display);
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(30000))
        return -1;
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QStringList XvfbServer::windowGeometries(const QString& titlePrefix) const
{
    QString tree;
    run(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-tree")}, &tree);
    const QRegularExpression line(QStringLiteral(R"re("%1[^"]*".*\)\s+(\d+x\d+[+-]-?\d+[+-]-?\d+))re")
                                      .arg(QRegularExpression::escape(titlePrefix)));
    QStringList geometries;
    for (const QString& row : tree.split(QLatin1Char('\n')))
        if (const auto match = line.match(row); match.hasMatch())
            geometries << match.captured(1);
    geometries.sort();
    return geometries;
}

bool XvfbServer::addMonitor(const Monitor& m)
{
    const QString geometry = QStringLiteral("%1/%2x%3/%4+%5+%6")
                                 .arg(m.geometry.width())
                                 .arg(m.millimetres.width())
                                 .arg(m.geometry.height())
                                 .arg(m.millimetres.height())
                                 .arg(m.geometry.x())
                                 .arg(m.geometry.y());
    // The first monitor takes the server's output; the others are virtual.
    const QString output = m_monitors.isEmpty() ? QStringLiteral("screen") : QStringLiteral("none");
    QStringList args{QStringLiteral("--setmonitor"), m.name, geometry, output};
    if (run(QStringLiteral("xrandr"), args) != 0)
        return false;
    if (m.primary && run(QStringLiteral("xrandr"), {QStringLiteral("--output"), QStringLiteral("screen"),
                                                    QStringLiteral("--primary")}) != 0)
        return false;
    m_monitors.append(m.name);
    return true;
}

bool XvfbServer::removeMonitor(const QString& name)
{
    if (run(QStringLiteral("xrandr"), {QStringLiteral("--delmonitor"), name}) != 0)
        return false;
    m_monitors.removeAll(name);
    return true;
}

bool XvfbServer::setMonitors(const QList<Monitor>& monitors)
{
    for (const QString& name : QStringList(m_monitors))
        if (!removeMonitor(name))
            return false;
    for (const Monitor& monitor : monitors)
        if (!addMonitor(monitor))
            return false;
    return true;
}

XvfbServer* XvfbServer::current() { return s_current; }
void XvfbServer::setCurrent(XvfbServer* server) { s_current = server; }

} // namespace kelvane::test
