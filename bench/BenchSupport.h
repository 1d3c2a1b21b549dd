#pragma once
// Small helpers shared by the benchmarks: child processes, a private X server and session bus,
// and statistics.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

// Standard error goes to `errors` when one is named, and is dropped otherwise.
inline pid_t spawn(const std::vector<std::string>& argv, const std::vector<std::string>& env = {},
                   const std::string& errors = {})
{
    const pid_t pid = fork();
    if (pid == 0) {
        for (const auto& e : env)
            putenv(const_cast<char*>(e.c_str()));
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        dup2(errors.empty() ? null : open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        std::vector<char*> args;
        for (const auto& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    return pid;
}

inline void stop(pid_t pid)
{
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, 0);
}

// Starts a program that prints one line on standard output when it is ready (a display number,
// a bus address) and returns that line.
inline std::string startAndReadLine(std::vector<std::string> argv, pid_t& pid)
{
    int fds[2];
    if (pipe(fds) != 0)
        return {};
    pid = fork();
    if (pid == 0) {
        close(fds[0]);
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDERR_FILENO);
        dup2(fds[1], STDOUT_FILENO);
        std::vector<char*> args;
        for (auto& a : argv)
            args.push_back(a.data());
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    close(fds[1]);
    std::string line;
    char c = 0;
    pollfd pfd{fds[0], POLLIN, 0};
    while (line.find('\n') == std::string::npos && poll(&pfd, 1, 15000) > 0 && read(fds[0], &c, 1) == 1)
        line += c;
    close(fds[0]);
    if (line.empty() || line.back() != '\n')
        return {};
    line.pop_back();
    return line;
}

inline std::string startXvfb(pid_t& pid)
{
    const std::string number = startAndReadLine(
        {"Xvfb", "-screen", "0", "2792x982x24", "-noreset", "-nolisten", "tcp", "-displayfd", "1"}, pid);
    return number.empty() ? std::string() : ":" + number;
}

// A private session bus, so that the benchmark never meets the user's own agent.
inline std::string startSessionBus(pid_t& pid)
{
    return startAndReadLine({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"}, pid);
}

// Everything a program prints on standard output.
inline std::string output(const std::vector<std::string>& argv, const std::vector<std::string>& env = {})
{
    int fds[2];
    if (pipe(fds) != 0)
        return {};
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        for (const auto& e : env)
            putenv(const_cast<char*>(e.c_str()));
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDERR_FILENO);
        dup2(fds[1], STDOUT_FILENO);
        std::vector<char*> args;
        for (const auto& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execvp(args[0], args.data());
        _exit(127);
    }
    close(fds[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = read(fds[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, std::size_t(n));
    close(fds[0]);
    waitpid(pid, nullptr, 0);
    return text;
}

// Seconds of processor time a process has used, all its threads together.
inline double cpuSeconds(pid_t pid)
{
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const auto close = stat.rfind(')');
    if (close == std::string::npos)
        return 0;
    // After the command name: state, then fields 4 to 13, then utime and stime.
    std::vector<std::string> fields;
    std::string field;
    for (char c : stat.substr(close + 2)) {
        if (c == ' ') {
            fields.push_back(field);
            field.clear();
        } else {
            field += c;
        }
    }
    if (fields.size() < 13)
        return 0;
    return double(std::atol(fields[11].c_str()) + std::atol(fields[12].c_str())) / double(sysconf(_SC_CLK_TCK));
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline double minimum(const std::vector<double>& values) { return *std::min_element(values.begin(), values.end()); }
inline double maximum(const std::vector<double>& values) { return *std::max_element(values.begin(), values.end()); }

inline long statusField(const std::string& path, const char* field)
{
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line))
        if (line.rfind(field, 0) == 0)
            return std::atol(line.c_str() + std::strlen(field));
    return 0;
}

inline const char* verdict(bool met) { return met ? "met" : "NOT met"; }

// Context switches of all the threads of a process: every wake-up counts at least one.
inline long contextSwitches(pid_t pid)
{
    long total = 0;
    const std::string tasks = "/proc/" + std::to_string(pid) + "/task";
    if (DIR* dir = opendir(tasks.c_str())) {
        while (dirent* entry = readdir(dir)) {
            if (entry->d_name[0] == '.')
                continue;
            const std::string status = tasks + "/" + entry->d_name + "/status";
            total += statusField(status, "voluntary_ctxt_switches:") +
                     statusField(status, "nonvoluntary_ctxt_switches:");
        }
        closedir(dir);
    }
    return total;
}

inline double wakeupsPerSecond(pid_t pid, int seconds)
{
    const long before = contextSwitches(pid);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    return double(contextSwitches(pid) - before) / seconds;
}

// Milliseconds from start to exit of a process, and its exit status.
inline double timeToExit(const std::vector<std::string>& argv, const std::vector<std::string>& env, int& status)
{
    const auto start = Clock::now();
    const pid_t pid = spawn(argv, env);
    int raw = 0;
    waitpid(pid, &raw, 0);
    status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

inline std::vector<std::string> sessionEnvironment(const std::string& home, const std::string& display,
                                                   const std::string& busAddress)
{
    return {"HOME=" + home,         "XDG_CONFIG_HOME=" + home + "/config", "XDG_DATA_HOME=" + home + "/data",
            "XDG_RUNTIME_DIR=" + home, "DISPLAY=" + display,             "DBUS_SESSION_BUS_ADDRESS=" + busAddress};
}

// The agent on a private X server and session bus, in a temporary home, answering kelvanectl.
class AgentSession {
public:
    // `extraEnvironment` ("NAME=value") is the agent's alone.
    bool start(const char* agentBinary, const char* ctlBinary, const std::vector<std::string>& extraEnvironment = {})
    {
        m_display = startXvfb(m_xvfb);
        const std::string busAddress = startSessionBus(m_bus);
        char home[] = "/tmp/kelvane-bench-XXXXXX";
        if (m_display.empty() || busAddress.empty() || !mkdtemp(home)) {
            std::fprintf(stderr, "could not start Xvfb or a session bus\n");
            return false;
        }
        m_home = home;
        env = sessionEnvironment(m_home, m_display, busAddress);
        std::vector<std::string> agentEnvironment = env;
        agentEnvironment.insert(agentEnvironment.end(), extraEnvironment.begin(), extraEnvironment.end());
        agent = spawn({agentBinary}, agentEnvironment);
        int status = 1;
        for (int attempt = 0; attempt < 200 && status != 0; ++attempt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            timeToExit({ctlBinary, "state"}, env, status);
        }
        if (status != 0)
            std::fprintf(stderr, "the agent did not come up on the session bus\n");
        return status == 0;
    }
    ~AgentSession()
    {
        for (pid_t pid : {agent, m_bus, m_xvfb})
            if (pid > 0)
                stop(pid);
        if (!m_home.empty())
            std::system(("rm -rf " + m_home).c_str());
    }

    pid_t agent = -1;
    std::vector<std::string> env;

private:
    pid_t m_xvfb = -1;
    pid_t m_bus = -1;
    std::string m_display;
    std::string m_home;
};

} // namespace bench
