#include <state/desired/host_address.h>

#include <algorithm>

namespace zelk
{
namespace
{

bool IsLastOfNetwork(const IpPrefix& prefix)
{
    const auto bytes = prefix.address.Bytes();
    for (std::size_t bit = prefix.length; bit < bytes.size() * 8; ++bit)
        if ((bytes[bit / 8] >> (7 - bit % 8) & 1) == 0)
            return false;
    return true;
}

/// 240.0.0.0/4 with the limited broadcast address, and 0.0.0.0/8.
bool IsReserved(const IpAddress& address)
{
    return address.IsIpv4() && (address.Bytes()[0] >= 240 || address.Bytes()[0] == 0);
}

} // namespace

std::string RefuseAsPeer(const IpAddress& address)
{
    if (address.IsUnspecified())
        return "is the unspecified address, not that of a host";
    if (address.IsMulticast())
        return "is a multicast address, not that of a host";
    if (address.IsLoopback())
        return "is a loopback address, which stays within a machine";
    if (IsReserved(address))
        return "is a reserved address, which no host has";
    return {};
}

std::string RefuseAsHost(const IpPrefix& prefix)
{
    if (std::string reason = RefuseAsPeer(prefix.address); !reason.empty())
        return reason;
    const Family family = prefix.address.GetFamily();
    if (prefix.length == 0)
        return std::string("has the prefix length 0; a network has 1 to ") + (family == Family::IPV4 ? "32" : "128");
    if (prefix.length >= BitsOf(family) - 1)
        return {}; // too small to have addresses of its own
    if (prefix == prefix.Network())
        return family == Family::IPV4 ? "is the address of the network itself, not of a host"
                                      : "is the address of all routers of the network, not of a host";
    if (family == Family::IPV4 && IsLastOfNetwork(prefix))
        return "is the broadcast address of its network, not that of a host";
    return {};
}

std::string RefuseAsDestination(const IpPrefix& destination)
{
    if (destination.length == 0)
        return "is a default route; give it as one of the gateways";
    if (destination != destination.Network())
        return "is not a network; did you mean " + destination.Network().ToText() + '?';
    if (destination.address.IsMulticast() || destination.address.IsLoopback() || IsReserved(destination.address))
        return "is no network that can be routed to";
    return {};
}

} // namespace zelk
