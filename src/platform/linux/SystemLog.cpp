#include "SystemLog.h"

#include "core/Log.h"

#include <syslog.h>

namespace kelvane {

void installSyslogSink()
{
    openlog("kelvane", LOG_PID, LOG_USER);
    setSystemLogSink([](const QString& line) { syslog(LOG_NOTICE, "%s", line.toUtf8().constData()); });
}

} // namespace kelvane
