#include "SerialQueue.h"

namespace kelvane {

SerialQueue::SerialQueue()
{
    m_pool.setMaxThreadCount(1);
}

SerialQueue::~SerialQueue() { m_pool.waitForDone(); }

void SerialQueue::async(std::function<void()> task) { m_pool.start(std::move(task)); }

bool SerialQueue::waitForIdle(int milliseconds) { return m_pool.waitForDone(milliseconds); }

void SerialQueue::sync(std::function<void()> task)
{
    m_pool.start(std::move(task));
    m_pool.waitForDone();
}

} // namespace kelvane
