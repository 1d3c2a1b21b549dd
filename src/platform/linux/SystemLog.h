#pragma once

namespace kelvane {

// Sends the agent's system-log lines to syslog (the journal on systemd desktops), tagged
// "kelvane", at the notice level.
void installSyslogSink();

} // namespace kelvane
