#pragma once

#include <string>

#include <state/values/ip_prefix.h>

namespace zelk
{

// Each gives the reason why the value cannot be used so, in words that follow the value, or an empty text.

/// As an address of a host, with the prefix of its network.
std::string RefuseAsHost(const IpPrefix& address);
/// As another host that packets can be sent to.
std::string RefuseAsPeer(const IpAddress& address);
/// As the destination of a static route.
std::string RefuseAsDestination(const IpPrefix& destination);

} // namespace zelk
