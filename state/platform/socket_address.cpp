#include <state/platform/socket_address.h>

#include <algorithm>
#include <cstring>

namespace zelk
{
namespace
{

IpAddress FromBytes(const in6_addr& address) noexcept
{
    IpAddress::Ipv6Bytes bytes;
    std::ranges::copy(address.s6_addr, bytes.begin());
    return IpAddress(bytes);
}

template <class Socket>
std::optional<Socket> Copied(const SOCKET_ADDRESS& address) noexcept
{
    Socket copy = {};
    if (address.iSockaddrLength < static_cast<int>(sizeof(copy)))
        return std::nullopt;
    std::memcpy(&copy, address.lpSockaddr, sizeof(copy));
    return copy;
}

} // namespace

std::optional<IpAddress> FromSocketAddress(const SOCKET_ADDRESS& address) noexcept
{
    constexpr int SIZE_OF_FAMILY = sizeof(ADDRESS_FAMILY);
    if (address.lpSockaddr == nullptr || address.iSockaddrLength < SIZE_OF_FAMILY)
        return std::nullopt;
    if (address.lpSockaddr->sa_family == AF_INET)
    {
        const auto ipv4 = Copied<sockaddr_in>(address);
        return ipv4 ? std::optional(FromNetworkOrder(ipv4->sin_addr.s_addr)) : std::nullopt;
    }
    const auto ipv6 = address.lpSockaddr->sa_family == AF_INET6 ? Copied<sockaddr_in6>(address) : std::nullopt;
    return ipv6 ? std::optional(FromBytes(ipv6->sin6_addr)) : std::nullopt;
}

std::optional<IpAddress> FromSocketAddress(const SOCKADDR_INET& address) noexcept
{
    if (address.si_family == AF_INET)
        return FromNetworkOrder(address.Ipv4.sin_addr.s_addr);
    if (address.si_family == AF_INET6)
        return FromBytes(address.Ipv6.sin6_addr);
    return std::nullopt;
}

IpAddress FromNetworkOrder(DWORD address) noexcept
{
    IpAddress::Ipv4Bytes bytes;
    std::memcpy(bytes.data(), &address, bytes.size());
    return IpAddress(bytes);
}

ADDRESS_FAMILY PlatformFamily(Family family) noexcept
{
    return family == Family::IPV4 ? AF_INET : AF_INET6;
}

} // namespace zelk
