#pragma once

#include <optional>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <windows.h>

#include <state/values/ip_address.h>

namespace zelk
{

/// The address; nothing for another family, a null pointer, or a structure shorter than its family's.
std::optional<IpAddress> FromSocketAddress(const SOCKET_ADDRESS& address) noexcept;

/// The address; nothing for another family.
std::optional<IpAddress> FromSocketAddress(const SOCKADDR_INET& address) noexcept;

/// The address of a number in network byte order, as the older tables have it.
IpAddress FromNetworkOrder(DWORD address) noexcept;

/// The platform's number for the family.
ADDRESS_FAMILY PlatformFamily(Family family) noexcept;

} // namespace zelk
