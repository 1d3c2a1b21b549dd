#pragma once

#include "ScopedEnvironment.h"

#include <QProcess>
#include <QString>

namespace kelvane::test {

// A real sound server for one test: PulseAudio with a null output (its monitor records what plays
// on it), in a runtime folder of its own that is this process's XDG_RUNTIME_DIR while it lives.
class SoundServer {
public:
    explicit SoundServer(const QString& runtime);
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    static bool available();
    // Whether the server answers (waiting a while for it).
    static bool ready();
    // The output's level from the server itself, 0 to 1.
    static double level();
    // The streams reading from the server (a capture), as `pactl` lists them.
    static int recordingStreams();

private:
    ScopedEnvironment m_env;
    QProcess m_server;
};

#define REQUIRE_PULSEAUDIO()                                                                                           \
    if (!::kelvane::test::SoundServer::available())                                                                    \
    GTEST_SKIP() << "PulseAudio or its tools are not installed"

} // namespace kelvane::test
