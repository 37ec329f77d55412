#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

namespace velmor
{

/// The structure that `sa` points to; all zero (AF_UNSPEC) for a null pointer or another family. The family decides how
/// many bytes are read, because an IPv4 address is shorter than the union. The length field is ignored.
SOCKADDR_INET CopySocketAddress(const SOCKET_ADDRESS& sa) noexcept;

} // namespace velmor
