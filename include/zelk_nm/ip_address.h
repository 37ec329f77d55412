#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

#include <zelk_nm/export.h>
#include <zelk_nm/string.h>

/// @file
/// An IP address of either family.

namespace velmor
{

/// An IPv4 or IPv6 address, or an address that could not be formed (the invalid state).
///
/// Text is parsed and formatted by Winsock, which the library keeps started while it is loaded.
/// Threads: const access is safe from several threads.
class ZELK_NM_API ip_address
{
public:
    /// Family of an address that could not be formed. It is neither AF_INET nor AF_INET6.
    static constexpr unsigned short INVALID_FAMILY = 16;

    /// The bare text: no port, no brackets, no scope. Throws NetworkError: code 10047 (WSAEAFNOSUPPORT) for an invalid
    /// address, Winsock's own code when formatting fails.
    virtual operator velmor::string() const;
    /// Nothing to free.
    virtual ~ip_address();

    /// IPv4 0.0.0.0.
    ip_address() noexcept;
    /// Parses an IPv4 or IPv6 address; any other text gives an invalid one. Port, flow information and scope in the
    /// text are not kept. Throws nothing but std::bad_alloc.
    explicit ip_address(const velmor::string& sText);
    /// Copies the structure whole, the family included. Port and address are in network byte order, as Winsock has
    /// them.
    explicit ip_address(const SOCKADDR_IN& sa) noexcept;
    /// Likewise.
    explicit ip_address(const SOCKADDR_IN6& sa) noexcept;
    /// A family other than AF_INET and AF_INET6 gives an invalid address.
    explicit ip_address(const SOCKADDR_INET& sa) noexcept;

    /// A copy.
    ip_address(const ip_address&) noexcept = default;
    /// A copy.
    ip_address& operator=(const ip_address&) noexcept = default;

    /// AF_INET, AF_INET6 or INVALID_FAMILY.
    [[nodiscard]] unsigned short family() const noexcept { return m_address.si_family; }
    /// Whether the family is AF_INET.
    [[nodiscard]] bool is_ipv4() const noexcept { return family() == AF_INET; }
    /// Whether the family is AF_INET6.
    [[nodiscard]] bool is_ipv6() const noexcept { return family() == AF_INET6; }
    /// Whether it is one of the two.
    [[nodiscard]] bool is_valid() const noexcept { return is_ipv4() || is_ipv6(); }

    /// The address as the platform's union; family INVALID_FAMILY and otherwise zero when invalid.
    [[nodiscard]] const SOCKADDR_INET& sockaddr() const noexcept { return m_address; }

    /// Family and address bytes alone count: not port, flow information or scope. An invalid address equals nothing,
    /// not even itself.
    bool operator==(const ip_address& other) const noexcept;
    /// The opposite: true of an invalid address and anything.
    bool operator!=(const ip_address& other) const noexcept { return !(*this == other); }

private:
    SOCKADDR_INET m_address;
};

} // namespace velmor
