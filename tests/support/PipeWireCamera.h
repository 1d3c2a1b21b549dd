#pragma once

#include "ScopedEnvironment.h"
#include "SessionBus.h"

#include <QJsonArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace kelvane::test {

// A camera without hardware: a PipeWire server of the test's own (its runtime folder is this
// process's XDG_RUNTIME_DIR while it lives) with a moving test picture, colour bars over snow,
// offered as a video source, and, unless told not to, the session manager that lets a program
// connect to it.
class PipeWireCamera {
public:
    explicit PipeWireCamera(bool withManager = true);
    ~PipeWireCamera();
    PipeWireCamera(const PipeWireCamera&) = delete;
    PipeWireCamera& operator=(const PipeWireCamera&) = delete;

    static bool available();
    QString runtimePath() const { return m_runtime.path(); }
    // The camera is unplugged.
    void removeSource();

    // The server's nodes of a media class.
    static int nodes(const char* mediaClass);
    // The streams that read a camera: the camera's light is on while there is one.
    static int readers() { return nodes("Stream/Input/Video"); }
    // Whether the camera is offered (waiting a while for it).
    static bool offered();

private:
    static QJsonArray dump();

    QTemporaryDir m_runtime;
    ScopedEnvironment m_env;
    SessionBus m_bus;
    QProcess m_server, m_manager;
};

#define REQUIRE_PIPEWIRE()                                                                                             \
    if (!::kelvane::test::PipeWireCamera::available())                                                                 \
    GTEST_SKIP() << "PipeWire, WirePlumber or GStreamer's tools are not installed"

} // namespace kelvane::test
