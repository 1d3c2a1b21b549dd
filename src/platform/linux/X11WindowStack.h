#pragma once

#include "notch/FullscreenMonitor.h"

#include <QHash>
#include <QSet>

class QSocketNotifier;
struct xcb_connection_t;

namespace kelvane {

// The window manager's windows through EWMH, on a connection of its own to the X server: the
// stacking list and the active window from the root window, each window's _NET_WM_STATE, type,
// owner and place, all followed through property, structure and map events.
class X11WindowStack final : public WindowStackSource {
    Q_OBJECT
public:
    explicit X11WindowStack(QObject* parent = nullptr);
    ~X11WindowStack() override;

    void start() override;

private:
    void drain();
    void refresh();
    void follow(quint32 window);

    xcb_connection_t* m_connection = nullptr;
    QSocketNotifier* m_notifier = nullptr;
    quint32 m_root = 0;
    QHash<QByteArray, quint32> m_atoms;
    // Windows whose events this connection already asked for.
    QSet<quint32> m_followed;
};

} // namespace kelvane
