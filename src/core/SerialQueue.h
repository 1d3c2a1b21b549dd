#pragma once

#include <QThreadPool>

#include <functional>

namespace kelvane {

// Work that must not hold up the main thread and must not overlap itself: tasks run one at a
// time, in the order they were queued, on a thread of their own.
class SerialQueue {
public:
    SerialQueue();
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void async(std::function<void()> task);
    // Runs `task` after everything queued before it and waits for it to finish.
    void sync(std::function<void()> task);
    // Waits for everything queued to finish, or for the time to be up: false then.
    bool waitForIdle(int milliseconds);

private:
    QThreadPool m_pool;
};

} // namespace kelvane
