#include "QuitSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace kelvane {

namespace {
int s_pipe[2] = {-1, -1};

void handle(int signal)
{
    // Only async-signal-safe calls here: the number is passed on through the socket.
    const char byte = static_cast<char>(signal);
    [[maybe_unused]] const auto written = ::write(s_pipe[0], &byte, 1);
}

constexpr int quitSignals[] = {SIGTERM, SIGINT, SIGHUP};
} // namespace

QuitSignals::QuitSignals(QObject* parent)
    : QObject(parent)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, s_pipe) != 0)
        return;
    m_notifier = new QSocketNotifier(s_pipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitSignals::readSignal);
    struct sigaction action {};
    action.sa_handler = handle;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int signal : quitSignals)
        ::sigaction(signal, &action, nullptr);
}

QuitSignals::~QuitSignals()
{
    // Signals that arrive from now on are ignored rather than ending the process half-way
    // through its last steps.
    for (int signal : quitSignals)
        std::signal(signal, SIG_IGN);
}

QString QuitSignals::name(int signal)
{
    switch (signal) {
    case SIGTERM:
        return QStringLiteral("SIGTERM");
    case SIGINT:
        return QStringLiteral("SIGINT");
    case SIGHUP:
        return QStringLiteral("SIGHUP");
    default:
        return QStringLiteral("signal %1").arg(signal);
    }
}

void QuitSignals::readSignal()
{
    char byte = 0;
    if (::read(s_pipe[1], &byte, 1) == 1)
        Q_EMIT received(static_cast<unsigned char>(byte));
}

} // namespace kelvane
