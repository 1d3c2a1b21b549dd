#include "WaylandCompositor.h"

#include "Polling.h"
#include "XvfbServer.h"

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QStandardPaths>

#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace kelvane::test {

namespace {
// Sway will not run as root: as root, it runs as this user.
constexpr const char* unprivileged = "nobody";

QString readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

WaylandCompositor::WaylandCompositor(Kind kind, QSize output)
    : m_kind(kind)
    , m_output(output)
{
    // A test that crashes takes its compositor (and the compositor its XWayland) with it.
    m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_runtime = m_dir.filePath(QStringLiteral("runtime"));
    QDir().mkpath(m_runtime);
    QFile::setPermissions(m_runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

WaylandCompositor::~WaylandCompositor()
{
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(2000);
    }
}

QString WaylandCompositor::missingProgram() const
{
    QStringList needed{QStringLiteral("Xwayland"), QStringLiteral("xwininfo")};
    if (m_kind == Kind::westonHeadless)
        needed << QStringLiteral("weston") << QStringLiteral("weston-screenshooter");
    else
        needed << QStringLiteral("sway") << QStringLiteral("swaymsg") << QStringLiteral("grim")
               << QStringLiteral("xhost") << QStringLiteral("setpriv");
    for (const QString& program : needed)
        if (QStandardPaths::findExecutable(program).isEmpty())
            return program;
    return {};
}

bool WaylandCompositor::start(QString* why)
{
    return m_kind == Kind::westonHeadless ? startWeston(why) : startSway(why);
}

bool WaylandCompositor::startWeston(QString* why)
{
    const QString socket = QStringLiteral("kelvane-%1").arg(::getpid());
    const QString log = m_dir.filePath(QStringLiteral("weston.log"));
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime);
    env.remove(QStringLiteral("DISPLAY"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    m_process.setProcessEnvironment(env);
    m_process.setWorkingDirectory(m_dir.path());
    // --debug offers the screenshooter.
    m_process.start(QStringLiteral("weston"),
                    {QStringLiteral("--backend=headless-backend.so"), QStringLiteral("--use-pixman"),
                     QStringLiteral("--width=%1").arg(m_output.width()), QStringLiteral("--height=%1").arg(m_output.height()),
                     QStringLiteral("--socket=") + socket, QStringLiteral("--xwayland"), QStringLiteral("--no-config"),
                     QStringLiteral("--idle-time=0"), QStringLiteral("--debug"), QStringLiteral("--log=") + log});
    static const QRegularExpression listening(QStringLiteral("xserver listening on display (:\\d+)"));
    QRegularExpressionMatch match;
    waitUntil([&] {
        match = listening.match(readAll(log));
        return match.hasMatch() || m_process.state() == QProcess::NotRunning;
    }, 15000);
    if (!match.hasMatch()) {
        *why = QStringLiteral("Weston did not start XWayland: ") + readAll(log).right(400);
        return false;
    }
    m_xDisplay = match.captured(1);
    m_waylandDisplay = QDir(m_runtime).filePath(socket);
    // XWayland starts when its first client connects.
    return waitUntil([&] { return runX(QStringLiteral("xwininfo"), {QStringLiteral("-root")}) == 0; }, 15000) ||
           (*why = QStringLiteral("XWayland did not answer"), false);
}

bool WaylandCompositor::startSway(QString* why)
{
    const bool root = ::geteuid() == 0;
    const QString where = m_dir.filePath(QStringLiteral("where"));
    const QString config = m_dir.filePath(QStringLiteral("config"));
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QStringLiteral("xwayland enable\n"
                              "output * resolution %1x%2 position 0 0\n"
                              "exec sh -c 'xhost +si:localuser:root >/dev/null; echo \"$DISPLAY $WAYLAND_DISPLAY $SWAYSOCK\" > %3'\n")
                   .arg(m_output.width())
                   .arg(m_output.height())
                   .arg(where)
                   .toUtf8());
    file.close();
    QProcessEnvironment env;
    env.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime);
    env.insert(QStringLiteral("WLR_RENDERER"), QStringLiteral("pixman"));
    if (m_kind == Kind::swayInX11) {
        XvfbServer* x = XvfbServer::current();
        if (!x)
            return (*why = QStringLiteral("no X server to draw Sway into"), false);
        env.insert(QStringLiteral("WLR_BACKENDS"), QStringLiteral("x11"));
        env.insert(QStringLiteral("WLR_X11_OUTPUTS"), QStringLiteral("1"));
        env.insert(QStringLiteral("DISPLAY"), x->display());
        if (root)
            x->run(QStringLiteral("xhost"), {QStringLiteral("+si:localuser:") + unprivileged});
    } else {
        env.insert(QStringLiteral("WLR_BACKENDS"), QStringLiteral("headless"));
        env.insert(QStringLiteral("WLR_LIBINPUT_NO_DEVICES"), QStringLiteral("1"));
    }
    QStringList arguments{QStringLiteral("-c"), config};
    QString program = QStringLiteral("sway");
    if (root) {
        const passwd* user = getpwnam(unprivileged);
        if (!user)
            return (*why = QStringLiteral("no user to run Sway as"), false);
        if (::chown(m_dir.path().toLocal8Bit().constData(), user->pw_uid, user->pw_gid) != 0 ||
            ::chown(m_runtime.toLocal8Bit().constData(), user->pw_uid, user->pw_gid) != 0 ||
            ::chown(config.toLocal8Bit().constData(), user->pw_uid, user->pw_gid) != 0)
            return (*why = QStringLiteral("cannot hand the runtime folder to ") + unprivileged, false);
        arguments = QStringList{QStringLiteral("--reuid=") + unprivileged, QStringLiteral("--regid=") + QString::number(user->pw_gid),
                                QStringLiteral("--clear-groups"), program} + arguments;
        program = QStringLiteral("setpriv");
    }
    m_process.setProcessEnvironment(env);
    m_process.setWorkingDirectory(m_dir.path());
    m_process.start(program, arguments);
    waitUntil([&] { return !readAll(where).trimmed().isEmpty() || m_process.state() == QProcess::NotRunning; }, 15000);
    const QStringList found = readAll(where).trimmed().split(QLatin1Char(' '));
    if (found.size() != 3 || !found[0].startsWith(QLatin1Char(':'))) {
        *why = QStringLiteral("Sway did not start XWayland: ") + QString::fromUtf8(m_process.readAll()).right(400);
        return false;
    }
    m_xDisplay = found[0];
    m_waylandDisplay = QDir(m_runtime).filePath(found[1]);
    m_swaySocket = found[2];
    return waitUntil([&] { return runX(QStringLiteral("xwininfo"), {QStringLiteral("-root")}) == 0; }, 15000) ||
           (*why = QStringLiteral("XWayland did not answer"), false);
}

QProcessEnvironment WaylandCompositor::clientEnvironment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), m_xDisplay);
    env.insert(QStringLiteral("WAYLAND_DISPLAY"), m_waylandDisplay);
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtime);
    if (!m_swaySocket.isEmpty())
        env.insert(QStringLiteral("SWAYSOCK"), m_swaySocket);
    return env;
}

bool WaylandCompositor::sway(const QStringList& command) const
{
    QProcess process;
    process.setProcessEnvironment(clientEnvironment());
    process.start(QStringLiteral("swaymsg"), command);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

int WaylandCompositor::runX(const QString& program, const QStringList& arguments, QString* output) const
{
    QProcess process;
    process.setProcessEnvironment(clientEnvironment());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(15000))
        return -1;
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QStringList WaylandCompositor::notchWindows() const
{
    QString tree;
    runX(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-children")}, &tree);
    QStringList geometries;
    QStringList ids;
    static const QRegularExpression window(QStringLiteral("(0x[0-9a-f]+) \"Kelvane Notch"));
    for (auto it = window.globalMatch(tree); it.hasNext();)
        ids << it.next().captured(1);
    static const QRegularExpression absolute(QStringLiteral("Absolute upper-left X:\\s+(-?\\d+).*Absolute upper-left Y:\\s+(-?\\d+).*"
                                                            "Width:\\s+(\\d+).*Height:\\s+(\\d+).*Map State:\\s+(\\w+)"),
                                             QRegularExpression::DotMatchesEverythingOption);
    for (const QString& id : ids) {
        QString info;
        runX(QStringLiteral("xwininfo"), {QStringLiteral("-id"), id}, &info);
        const auto m = absolute.match(info);
        if (m.hasMatch() && m.captured(5) == QLatin1String("IsViewable"))
            geometries << QStringLiteral("%1x%2+%3+%4").arg(m.captured(3), m.captured(4), m.captured(1), m.captured(2));
    }
    geometries.sort();
    return geometries;
}

QString WaylandCompositor::screenshot(const QString& name) const
{
    QDir().mkpath(QStringLiteral(KELVANE_ARTIFACTS));
    const QString path = QStringLiteral(KELVANE_ARTIFACTS "/") + name + QStringLiteral(".png");
    QFile::remove(path);
    QProcess process;
    process.setProcessEnvironment(clientEnvironment());
    if (m_kind == Kind::westonHeadless) {
        // The screenshooter writes "wayland-screenshot-<time>.png" into its working folder.
        QTemporaryDir shots;
        process.setWorkingDirectory(shots.path());
        process.start(QStringLiteral("weston-screenshooter"), {});
        process.waitForFinished(15000);
        const QStringList taken = QDir(shots.path()).entryList({QStringLiteral("*.png")});
        if (taken.isEmpty() || !QFile::rename(QDir(shots.path()).filePath(taken.first()), path))
            QFile::copy(QDir(shots.path()).filePath(taken.value(0)), path);
    } else {
        process.start(QStringLiteral("grim"), {path});
        process.waitForFinished(15000);
    }
    return QFile::exists(path) ? path : QString();
}

} // namespace kelvane::test
