#include <support/values/socket_address.h>

#include <cstring>

namespace velmor
{

SOCKADDR_INET CopySocketAddress(const SOCKET_ADDRESS& sa) noexcept
{
    SOCKADDR_INET copy = {};
    if (sa.lpSockaddr == nullptr || sa.iSockaddrLength < static_cast<INT>(sizeof(sa.lpSockaddr->sa_family)))
        return copy;
    if (sa.lpSockaddr->sa_family == AF_INET && sa.iSockaddrLength >= static_cast<INT>(sizeof(copy.Ipv4)))
        std::memcpy(&copy.Ipv4, sa.lpSockaddr, sizeof(copy.Ipv4));
    else if (sa.lpSockaddr->sa_family == AF_INET6 && sa.iSockaddrLength >= static_cast<INT>(sizeof(copy.Ipv6)))
        std::memcpy(&copy.Ipv6, sa.lpSockaddr, sizeof(copy.Ipv6));
    return copy;
}

} // namespace velmor
