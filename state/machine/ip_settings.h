#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/machine/setting.h>
#include <state/values/ip_prefix.h>

namespace zelk
{

/// Who gave an adapter an address. The platform tells it of the prefix and of the rest separately.
enum class AddressOrigin : std::uint8_t
{
    OTHER,
    MANUAL,
    WELL_KNOWN, ///< fixed by a standard
    DHCP,
    ROUTER,     ///< a router gave the prefix; the rest is the adapter's own
    LINK_LAYER, ///< the adapter, for its link: fe80::, 169.254
    RANDOM      ///< the adapter, for a while: a temporary address
};

/// Duplicate-address detection.
enum class DadState : std::uint8_t
{
    INVALID,
    TENTATIVE,
    DUPLICATE,
    DEPRECATED,
    PREFERRED
};

/// A unicast address that an adapter has.
struct Address
{
    IpAddress address;
    std::optional<std::uint8_t> prefixLength; ///< on-link prefix in bits
    std::optional<AddressOrigin> origin;
    std::optional<DadState> dadState;          ///< absent before Vista
    std::optional<Lifetime> validLifetime;     ///< until the address goes
    std::optional<Lifetime> preferredLifetime; ///< until no new connection uses it

    bool operator==(const Address&) const = default;
};

/// A default gateway.
struct Gateway
{
    IpAddress address;
    /// Of its default route, as Route::metric; absent where the system chooses it or does not tell.
    std::optional<std::uint32_t> metric;

    bool operator==(const Gateway&) const = default;
};

/// What a DHCP server gave (IPv4; the `Dhcp...` and `Lease...` values of the adapter's IPv4 key).
struct Lease
{
    std::optional<IpPrefix> address;
    std::optional<IpAddress> server;
    std::optional<std::chrono::sys_seconds> obtained; ///< UTC
    std::optional<std::chrono::sys_seconds> expires;  ///< UTC
    std::optional<std::vector<IpAddress>> gateways;
    std::optional<std::vector<IpAddress>> dnsServers;
    std::optional<std::string> dnsSuffix;

    bool operator==(const Lease&) const = default;
};

/// Whether this is a server and not what stands for none: 0.0.0.0, or the broadcast address where no server answered.
bool IsDhcpServer(const IpAddress& address) noexcept;

/// NetBIOS over TCP/IP as it is set.
enum class NetbiosSetting : std::uint8_t
{
    DHCP, ///< the DHCP server's choice; without one, enabled
    ENABLED,
    DISABLED
};

/// From where configured addresses and gateways are known.
enum class ConfigurationSource : std::uint8_t
{
    /// The registry: what the system will set up again.
    PERSISTENT,
    /// Concluded from what is in use, because no documented means reads the stored ones (IPv6 from Vista on): those of
    /// manual origin and unlimited lifetime.
    ACTIVE
};

/// What is stored for an adapter and one family, and will be in use when it is set up anew.
struct ConfiguredIp
{
    /// Of addresses and gateways; absent where they are.
    std::optional<ConfigurationSource> source;
    /// IPv4: "EnableDHCP". IPv6: absent, its routers decide.
    std::optional<bool> dhcp;
    /// Static addresses. None while `dhcp` is on, which ignores those that are stored.
    std::optional<std::vector<IpPrefix>> addresses;
    /// Static gateways; they count beside those that DHCP gives.
    std::optional<std::vector<Gateway>> gateways;
    /// Static servers in their order of preference ("NameServer").
    std::optional<AutomaticOr<std::vector<IpAddress>>> dnsServers;
    /// The connection's own suffix ("Domain"); empty where none is set.
    std::optional<std::string> dnsSuffix;
    /// The interface's metric ("InterfaceMetric"; from Vista on, where that is not set, the one in use that is not
    /// automatic).
    std::optional<AutomaticOr<std::uint32_t>> metric;
    /// In bytes ("MTU"); from Vista on absent where that is not set, because the system keeps it elsewhere.
    std::optional<AutomaticOr<std::uint32_t>> mtu;
    /// IPv4: "IPAutoconfigurationEnabled" of the adapter or else of the machine; on where neither is set.
    std::optional<bool> autoconfiguration;
    /// IPv4: "NetbiosOptions".
    std::optional<NetbiosSetting> netbios;

    bool operator==(const ConfiguredIp&) const = default;
};

/// What an adapter uses of one family, with what is configured beside it. Lists are absent where they could not be read
/// and empty where there is nothing, as for a disabled adapter.
struct IpSettings
{
    /// Whether the protocol is bound to the adapter. False for an adapter that is disabled.
    std::optional<bool> enabled;
    /// IPv4: whether it is a DHCP client (from the address table). IPv6: "Dhcpv6State" is not 0.
    std::optional<bool> dhcp;
    std::optional<std::vector<Address>> addresses;
    /// Next hops of its default routes, by metric.
    std::optional<std::vector<Gateway>> gateways;
    /// In their order of preference.
    std::optional<std::vector<IpAddress>> dnsServers;
    /// The connection-specific suffix; empty where there is none.
    std::optional<std::string> dnsSuffix;
    /// The interface's metric, which is added to those of its routes; absent before Vista.
    std::optional<std::uint32_t> metric;
    /// Whether the system chose that metric; absent before Vista.
    std::optional<bool> automaticMetric;
    /// In bytes; of the link where the system has none for the family.
    std::optional<std::uint32_t> mtu;
    /// IPv4: whether the adapter gives itself an address of 169.254 where no DHCP server answers.
    std::optional<bool> autoconfiguration;
    /// IPv4: whether NetBIOS over TCP/IP runs, as set or as the DHCP server says.
    std::optional<bool> netbios;
    /// IPv4, of a DHCP client that has one.
    std::optional<Lease> lease;
    /// IPv6: the identity association and unique identifier of its DHCP client, the latter as pairs joined by "-";
    /// absent before Vista and where it has none.
    std::optional<std::uint32_t> dhcpIaid;
    std::optional<std::string> dhcpDuid;
    ConfiguredIp configured;

    bool operator==(const IpSettings&) const = default;
};

} // namespace zelk
