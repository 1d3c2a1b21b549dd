#include "SerialQueue.h"

#include "HandOff.h"

namespace kelvane {

SerialQueue::SerialQueue()
{
    m_pool.setMaxThreadCount(1);
}

SerialQueue::~SerialQueue()
{
    m_pool.waitForDone();
    takeOver(this);
}

void SerialQueue::async(std::function<void()> task)
{
    // What each task did is handed to whoever waits for the queue.
    m_pool.start(Handed([this, task = std::move(task)] {
        task();
        handOver(this);
    }));
}

bool SerialQueue::waitForIdle(int milliseconds)
{
    const bool idle = m_pool.waitForDone(milliseconds);
    takeOver(this);
    return idle;
}

void SerialQueue::sync(std::function<void()> task)
{
    async(std::move(task));
    m_pool.waitForDone();
    takeOver(this);
}

} // namespace kelvane
