#include <support/values/socket_address.h>

#include <cstring>

namespace velmor
{

SOCKADDR_INET CopySocketAddress(const SOCKET_ADDRESS& sa) noexcept
{
    SOCKADDR_INET copy = {};
    if (sa.lpSockaddr == nullptr)
        return copy;
    if (sa.lpSockaddr->sa_family == AF_INET)
        std::memcpy(&copy.Ipv4, sa.lpSockaddr, sizeof(copy.Ipv4));
    else if (sa.lpSockaddr->sa_family == AF_INET6)
        std::memcpy(&copy.Ipv6, sa.lpSockaddr, sizeof(copy.Ipv6));
    return copy;
}

} // namespace velmor
