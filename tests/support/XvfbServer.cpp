#include "XvfbServer.h"

#include <QProcessEnvironment>
#include <QRegularExpression>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvane::test {

namespace {
XvfbServer* s_current = nullptr;
}

XvfbServer::XvfbServer(int width, int height)
    : m_width(width)
    , m_height(height)
{
}

XvfbServer::~XvfbServer()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGTERM);
        int status = 0;
        ::waitpid(m_pid, &status, 0);
    }
}

bool XvfbServer::start()
{
    int fds[2];
    if (::pipe(fds) != 0)
        return false;
    const QByteArray screen = QByteArray::number(m_width) + 'x' + QByteArray::number(m_height) + "x24";
    const QByteArray fdText = QByteArray::number(fds[1]);
    m_pid = ::fork();
    if (m_pid == 0) {
        ::close(fds[0]);
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        ::execlp("Xvfb", "Xvfb", "-displayfd", fdText.constData(), "-screen", "0", screen.constData(),
                 "-noreset", "-nolisten", "tcp", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(fds[1]);
    if (m_pid < 0) {
        ::close(fds[0]);
        return false;
    }
    // Xvfb writes the display number once it accepts connections.
    QByteArray number;
    pollfd pfd{fds[0], POLLIN, 0};
    while (::poll(&pfd, 1, 15000) > 0) {
        char buffer[32];
        const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
        if (n <= 0)
            break;
        number.append(buffer, n);
        if (number.contains('\n'))
            break;
    }
    ::close(fds[0]);
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
