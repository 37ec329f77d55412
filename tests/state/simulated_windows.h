#pragma once

#include <string>
#include <vector>

#include <state/machine/machine.h>
#include <state/plan/plan.h>

/// What the server of an adapter's network gives.
zelk::Lease LeaseFor(const zelk::Adapter& adapter);

/// A machine as a value that the system's commands change as Windows does: what is in use and what is configured, each
/// by its own rules.
class SimulatedWindows
{
public:
    zelk::Machine machine;

    /// An adapter that is up, by default without any setting and static.
    zelk::Adapter& Add(const std::string& name);
    zelk::Adapter& Find(const std::string& name);

    /// Does what the step says. False where Windows would refuse it.
    bool Perform(const zelk::Step& step);
    bool dhcpServer = true; ///< whether one answers

    /// What concludes from the rest is brought in line; to be called after a change by hand.
    void Settle();

private:
    // What each kind of step does; the adapter is null for those of the machine.
    bool Perform(const zelk::Command& command, zelk::Adapter* adapter);
    bool Perform(const zelk::StoredRoute& route, zelk::Adapter* adapter);
    bool Perform(const zelk::StoredSetting& setting, zelk::Adapter* adapter);
    bool Perform(const zelk::Ipv6Binding& binding, zelk::Adapter* adapter);
    bool Perform(const zelk::LibraryCall& call, zelk::Adapter* adapter);
};
