#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

namespace velmor
{

/// The structure that `sa` points to. Never reads beyond its stated length: an IPv4 address is shorter than the union.
/// All zero (AF_UNSPEC) for a null pointer, another family, or a length below the family's own.
SOCKADDR_INET CopySocketAddress(const SOCKET_ADDRESS& sa) noexcept;

} // namespace velmor
