#pragma once

#include <span>
#include <vector>

#include <zelk_nm/tolva.h>

#include "answer/output.h"
#include "change/change.h"

namespace zelkctl
{

Json RecordOf(const TOLVA::ASSOC_IP_ADDR& address);
std::span<const Field> AddressFields();

bool IsIpv4(const TOLVA::ASSOC_IP_ADDR& address);

// An adapter's addresses as what a change alters. Those wanted are the ones of the family among `wanted`.

/// All of IPv4, with their prefix lengths.
Aspect Ipv4Addresses(const TOLVA::NIC_INFO& info, const std::vector<TOLVA::ASSOC_IP_ADDR>& wanted);
/// Those of IPv6 that the system did not configure by itself; without their prefix lengths, which it chooses.
Aspect StaticIpv6Addresses(const TOLVA::NIC_INFO& info, const std::vector<TOLVA::ASSOC_IP_ADDR>& wanted);
/// Static addresses of a family, of which none is wanted.
Aspect NoStaticAddresses(const TOLVA::NIC_INFO& info, TOLVA::FAMILY_TYPE enFamily);
/// IPv4 addresses from a DHCP server: some are wanted, whichever they will be, or none.
Aspect LeasedIpv4Addresses(const TOLVA::NIC_INFO& info, bool bWanted);

} // namespace zelkctl
