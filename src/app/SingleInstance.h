#pragma once

#include <QStringList>

class QObject;

namespace kelvane {

// One agent per user session: the first process to own the bus name is the agent; a later one
// hands its request over to it and ends.
class SingleInstance {
public:
    enum class Role {
        agent,     // this process owns the name and serves `service`
        secondary, // another agent runs: hand over and end
        alone,     // no session bus: this process runs, unreachable
    };
    // Publishes `service` and claims the name.
    static Role claim(QObject* service);
    // Asks the running agent to show its settings, or to open what `arguments` name; the exit
    // status of this process.
    static int handOver(const QStringList& arguments);
};

} // namespace kelvane
