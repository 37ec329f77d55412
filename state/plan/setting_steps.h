#pragma once

#include <state/plan/step_list.h>

namespace zelk
{

// Each plans the steps that take one part of an adapter to what is wanted, and none where it stands already.

/// The DNS servers of one family, which are wanted.
void PlanDnsServers(const Machine& machine, const Adapter& adapter, Family family, const DesiredAdapter& desired,
                    StepList& steps);
/// Metric and MTU of the interface.
void PlanInterface(const Adapter& adapter, Family family, const DesiredIp& wanted, StepList& steps);

/// What only the registry keeps: the connection's DNS suffix and NetBIOS over TCP/IP.
void PlanStored(const Adapter& adapter, const DesiredIp& wanted, StepList& steps);

// Routes that go are removed before addresses change, and those that come are added afterwards: some systems drop a
// route with the address that reaches its next hop. `flushed` says that the addresses are replaced and may take all
// routes with them, so that one that changes is made anew.
void PlanRouteRemovals(const Adapter& adapter, const std::vector<DesiredRoute>& wanted, bool flushed, StepList& steps);
void PlanRouteAdditions(const Adapter& adapter, const std::vector<DesiredRoute>& wanted, bool flushed, StepList& steps);

} // namespace zelk
