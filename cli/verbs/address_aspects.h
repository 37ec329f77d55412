#pragma once

#include <vector>

#include <state/machine/adapter.h>
#include <zelk_nm/tolva.h>

#include "change/change.h"

namespace zelkctl
{

// An adapter's addresses as what a change alters. Those wanted are the ones of the family among `wanted`.

/// All of IPv4, with their prefix lengths.
Aspect Ipv4Addresses(const zelk::Adapter& adapter, const std::vector<zelk::IpPrefix>& wanted);
/// Those of IPv6 that the system did not configure by itself; without their prefix lengths, which it chooses.
Aspect StaticIpv6Addresses(const zelk::Adapter& adapter, const std::vector<zelk::IpPrefix>& wanted);
/// Static addresses of a family, of which none is wanted.
Aspect NoStaticAddresses(const zelk::Adapter& adapter, zelk::Family family);
/// IPv4 addresses from a DHCP server: some are wanted, whichever they will be, or none.
Aspect LeasedIpv4Addresses(const zelk::Adapter& adapter, bool bWanted);

} // namespace zelkctl
