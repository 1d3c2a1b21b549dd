#include "MainThread.h"

#include <QCoreApplication>
#include <QThread>

namespace kelvane {

bool isMainThread()
{
    const auto* app = QCoreApplication::instance();
    // Without an application object there is no event loop to protect (plain unit tests).
    return app == nullptr || QThread::currentThread() == app->thread();
}

void assertMainThread()
{
    if (!isMainThread())
        qFatal("Incorrect actor executor assumption; Expected same executor as MainActor.");
}

} // namespace kelvane
