#pragma once

#include "hud/MediaKeyTap.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace kelvane {

// The media keys as the X server sees them, through XInput2 raw key events on the root window:
// observed, never grabbed, so the desktop (and any program holding a grab on them) still gets
// every press. Each key becomes the system-defined media-key event it stands for, delivered on
// a thread of its own with its own connection to the server.
class XInputKeySource final : public KeyEventSource {
public:
    XInputKeySource() = default;
    ~XInputKeySource() override;

    bool start(std::function<KeyEvent(const KeyEvent&)> callback, QString* error) override;
    void stop() override;
    void enable() override {}

    // Whether another X client holds a grab on the key (the desktop acts on it). Asked on the
    // key thread, from within the callback.
    bool grabbedElsewhere(MediaKey key) const;

private:
    void run();

    void* m_display = nullptr;
    std::function<KeyEvent(const KeyEvent&)> m_callback;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    int m_wakePipe[2] = {-1, -1};
    int m_xiOpcode = 0;
};

} // namespace kelvane
