#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

#include <zelk_nm/export.h>
#include <zelk_nm/string.h>

/// \file
/// The class velmor::ip_address.

namespace velmor
{

/// The constants of velmor::ip_address, apart from it for the same reason as velmor::string_constants.
struct ip_address_constants
{
    /// Family of an invalid address. It is neither AF_INET nor AF_INET6.
    static constexpr unsigned short INVALID_FAMILY = 16;
};

/// An IPv4 or IPv6 address, or an invalid one, which results from input that is no address.
///
/// Winsock parses and formats text; the library keeps it started while it is loaded. Constant objects can be read from
/// several threads.
class ZELK_NM_API ip_address : public ip_address_constants
{
public:
    /// Returns the address as text, without port, brackets or scope.
    /// \throws NetworkError with code 10047 (WSAEAFNOSUPPORT) for an invalid address, or with Winsock's code if
    ///         formatting fails
    /// \throws std::bad_alloc if there is no memory for the text
    virtual operator velmor::string() const;
    /// Destroys the address.
    virtual ~ip_address();

    /// Creates the IPv4 address 0.0.0.0.
    ip_address() noexcept;
    /// Creates an address from text.
    /// \param[in] sText  an IPv4 or IPv6 address. A port and a scope in it are ignored. Any other text creates an
    ///                   invalid address.
    /// \throws std::bad_alloc if there is no memory for the conversion
    explicit ip_address(const velmor::string& sText);
    /// Creates an address from a socket address, with all its fields.
    /// \param[in] sa  the socket address, in network byte order. Its family is taken over unchecked.
    explicit ip_address(const SOCKADDR_IN& sa) noexcept;
    /// Creates an address from a socket address, with all its fields.
    /// \param[in] sa  the socket address, in network byte order. Its family is taken over unchecked.
    explicit ip_address(const SOCKADDR_IN6& sa) noexcept;
    /// Creates an address from a socket address of either family, with all its fields.
    /// \param[in] sa  the socket address, in network byte order. A family other than AF_INET and AF_INET6 creates an
    ///                invalid address.
    explicit ip_address(const SOCKADDR_INET& sa) noexcept;

    /// Copies an address.
    ip_address(const ip_address&) noexcept = default;
    /// Copies an address.
    ip_address& operator=(const ip_address&) noexcept = default;

    /// Returns AF_INET, AF_INET6 or INVALID_FAMILY.
    [[nodiscard]] unsigned short family() const noexcept { return m_address.si_family; }
    /// Tells whether this is an IPv4 address.
    [[nodiscard]] bool is_ipv4() const noexcept { return family() == AF_INET; }
    /// Tells whether this is an IPv6 address.
    [[nodiscard]] bool is_ipv6() const noexcept { return family() == AF_INET6; }
    /// Tells whether this is an IPv4 or IPv6 address.
    [[nodiscard]] bool is_valid() const noexcept { return is_ipv4() || is_ipv6(); }

    /// Returns the address as a socket address. If it is invalid the family is INVALID_FAMILY.
    [[nodiscard]] const SOCKADDR_INET& sockaddr() const noexcept { return m_address; }

    /// Tells whether family and address are equal. Port, flow information and scope are not compared. An invalid
    /// address equals nothing, not even itself.
    bool operator==(const ip_address& other) const noexcept;
    /// Tells whether two addresses differ. An invalid address differs from everything.
    bool operator!=(const ip_address& other) const noexcept { return !(*this == other); }

private:
    SOCKADDR_INET m_address;
};

} // namespace velmor
