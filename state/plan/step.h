#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <state/fields/json.h>
#include <state/machine/ip_settings.h>
#include <state/values/guid.h>
#include <state/values/ip_prefix.h>

namespace zelk
{

/// The system's own commands.
enum class Program : std::uint8_t
{
    NETSH,
    ROUTE
};

/// One of the system's commands, from the system's directory. Each argument arrives as it is.
struct Command
{
    Program program = Program::NETSH;
    std::vector<std::string> arguments;

    bool operator==(const Command&) const = default;
};

/// Operations of the class TOLVA that do exactly one step.
enum class LibraryOperation : std::uint8_t
{
    ENABLE_ADAPTER,
    DISABLE_ADAPTER,
    SET_HARDWARE_ADDRESS, ///< an empty one is the driver's own
    SET_COMPUTER_NAME,
    SET_PRIMARY_DNS_SUFFIX,
    SET_WORKGROUP_NAME
};

struct LibraryCall
{
    LibraryOperation operation = LibraryOperation::ENABLE_ADAPTER;
    std::string argument;

    bool operator==(const LibraryCall&) const = default;
};

/// The stored form of an IPv4 route below the key PersistentRoutes, written or removed.
struct StoredRoute
{
    IpPrefix destination;
    IpAddress nextHop;
    std::optional<std::uint32_t> metric;
    bool wanted = true;

    bool operator==(const StoredRoute&) const = default;
};

/// What the registry keeps of the adapter's IPv4: the connection's DNS suffix, NetBIOS over TCP/IP, or the static
/// gateways.
struct StoredSetting
{
    std::variant<std::string, NetbiosSetting, std::vector<Gateway>> value;

    bool operator==(const StoredSetting&) const = default;
};

/// Binds IPv6 to the adapter, or unbinds it.
struct Ipv6Binding
{
    bool wanted = true;

    bool operator==(const Ipv6Binding&) const = default;
};

using Action = std::variant<Command, LibraryCall, StoredRoute, StoredSetting, Ipv6Binding>;

/// The least part of a change that can be done, fail and be undone by itself.
struct Step
{
    std::string adapter; ///< its name; empty for the machine
    std::optional<Guid> guid;
    std::string text; ///< what it does, such as "Adds the address 192.0.2.20/24"
    Action action;
    /// Paths of what it touches, with what goes along with that on some systems. It is undone by taking these back to
    /// what was configured before.
    std::vector<std::string> touches;

    bool operator==(const Step&) const = default;
};

/// "netsh.exe", "TOLVA::EnableAdapter", "registry", "INetCfg": by what it is done.
std::string MeansOf(const Action& action);
/// The arguments of a command for people to read; empty for other means.
std::string CommandText(const Action& action);
Json ToJson(const Step& step);

/// One thing that differs from what is wanted.
struct Difference
{
    std::string adapter; ///< its name; empty for the machine
    std::string path;    ///< such as "ipv4.addresses"
    Json before;         ///< an object of what is in use, with origins, and what is configured
    Json after;

    bool operator==(const Difference&) const = default;
};

Json ToJson(const Difference& difference);

} // namespace zelk
