#pragma once

#include <QList>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>

namespace kelvane::test {

// A private X server: Xvfb picks a free display number itself (-displayfd), so parallel tests
// never collide. Monitors are carved out of its one wide screen with xrandr, as hot-plug does.
class XvfbServer {
public:
    struct Monitor {
        QString name;
        QRect geometry;  // pixels
        QSize millimetres;
        bool primary = false;
    };

    XvfbServer(int width = 2792, int height = 982);
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    bool start();
    // Ends the server, as a session's end does.
    void stop();
    QString display() const { return m_display; }

    // Replaces the monitor set; returns false if xrandr failed.
    bool setMonitors(const QList<Monitor>& monitors);
    bool addMonitor(const Monitor& monitor);
    bool removeMonitor(const QString& name);
    // Runs an X client against this server and returns its exit code (output in `output`).
    int run(const QString& program, const QStringList& arguments, QString* output = nullptr) const;
    // Geometries ("WxH+X+Y") of the top-level windows whose title starts with `titlePrefix`, sorted,
    // as the server itself has them.
    QStringList windowGeometries(const QString& titlePrefix) const;

    static XvfbServer* current();
    static void setCurrent(XvfbServer* server);

private:
    int m_width;
    int m_height;
    QProcess m_process;
    QString m_display;
    QStringList m_monitors;
};

} // namespace kelvane::test
