#pragma once

#include <state/plan/step_list.h>

namespace zelk
{

// Each plans the steps that take one part of an adapter to what is wanted, and none where it stands already.

// `exact` says that the order of IPv4 addresses and gateways counts.

/// Whether a command will replace all IPv4 addresses, which can take the routes with them.
bool ReplacesAddresses(const Adapter& adapter, const DesiredIp& wanted, bool exact);
/// DHCP, addresses and gateways of IPv4, which go together: a command that sets an address sets the gateway too.
void PlanIpv4(const Adapter& adapter, const DesiredIp& wanted, bool exact, StepList& steps);
/// Addresses and gateways of IPv6.
void PlanIpv6(const Adapter& adapter, const DesiredIp& wanted, StepList& steps);
/// Takes one static IPv4 address away.
void PlanRemoval(const IpAddress& address, StepList& steps);

} // namespace zelk
