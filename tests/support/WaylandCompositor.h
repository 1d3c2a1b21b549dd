#pragma once

#include <QProcess>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace kelvane::test {

// A real Wayland compositor with XWayland for one test, the session a notebook runs: Weston's or
// Sway's headless back end (outputs with no screen), or Sway drawn into the test's X server, where
// the pointer that X server is given reaches Sway as a real input device. X11 clients (the agent)
// connect to its XWayland display.
class WaylandCompositor {
public:
    enum class Kind { westonHeadless, swayHeadless, swayInX11 };

    explicit WaylandCompositor(Kind kind, QSize output = {1512, 982});
    ~WaylandCompositor();
    WaylandCompositor(const WaylandCompositor&) = delete;
    WaylandCompositor& operator=(const WaylandCompositor&) = delete;

    // The program the kind needs, when it is not installed (the test is skipped then).
    QString missingProgram() const;
    // Starts it and waits for XWayland; false with the reason in `why`.
    bool start(QString* why);

    QString xDisplay() const { return m_xDisplay; }
    // The compositor's socket, as a full path.
    QString waylandDisplay() const { return m_waylandDisplay; }

    // A Sway command ("create_output"); false when Sway refused it.
    bool sway(const QStringList& command) const;
    // Runs an X client on XWayland; its exit code, its output in `output`.
    int runX(const QString& program, const QStringList& arguments, QString* output = nullptr) const;
    // Geometries ("WxH+X+Y") of the notch windows on XWayland, sorted.
    QStringList notchWindows() const;
    // The compositor's whole output as it shows it (Sway: grim; Weston: its screenshooter), kept as
    // NAME.png among the build's artifacts; the path, or nothing.
    QString screenshot(const QString& name) const;

private:
    bool startWeston(QString* why);
    bool startSway(QString* why);
    QProcessEnvironment clientEnvironment() const;

    Kind m_kind;
    QSize m_output;
    QTemporaryDir m_dir;
    QString m_runtime;
    QProcess m_process;
    QString m_xDisplay;
    QString m_waylandDisplay;
    QString m_swaySocket;
};

} // namespace kelvane::test
