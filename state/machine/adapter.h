#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/machine/ip_settings.h>
#include <state/machine/problem.h>
#include <state/machine/route.h>
#include <state/values/guid.h>
#include <state/values/hardware_address.h>

namespace zelk
{

/// What the adapter is to the protocols (the platform's interface type).
enum class AdapterType : std::uint8_t
{
    OTHER,
    ETHERNET,
    TOKEN_RING,
    FDDI,
    PPP,
    LOOPBACK,
    SLIP,
    WIRELESS,
    TUNNEL
};

/// Whether there is hardware behind it.
enum class AdapterKind : std::uint8_t
{
    PHYSICAL,
    VIRTUAL
};

/// What a person wants to know first.
enum class AdapterStatus : std::uint8_t
{
    UP,               ///< passes packets
    DOWN,             ///< passes none, without a reason that the system tells
    TESTING,          ///< in a test
    UNKNOWN,          ///< the system does not know
    DORMANT,          ///< waits for an event from outside
    NOT_PRESENT,      ///< the device is not there, or a part of it is missing
    LOWER_LAYER_DOWN, ///< what it stands on is down
    UNPLUGGED,        ///< down because no cable or network is connected
    DISABLED,         ///< switched off by somebody
    FAILED            ///< the device does not start: see Adapter::deviceProblem
};

/// Why a device does not run.
struct DeviceProblem
{
    std::uint32_t code = 0; ///< the device manager's, such as 22 for a disabled device
    std::string text;       ///< in English

    bool operator==(const DeviceProblem&) const = default;
};

/// The software of an adapter's device, from its subkey of the network class key.
struct Driver
{
    std::optional<std::string> description; ///< "DriverDesc"
    std::optional<std::string> provider;    ///< "ProviderName"
    std::optional<std::string> version;     ///< "DriverVersion"
    std::optional<std::string> date;        ///< "DriverDate" as YYYY-MM-DD
    std::optional<std::string> speedDuplex; ///< what the driver shows for its speed and duplex setting
    /// "NetworkAddress": the hardware address that the driver is told to use; absent for its own.
    std::optional<HardwareAddress> hardwareAddress;

    bool operator==(const Driver&) const = default;
};

/// One network adapter, whatever its state. Texts are UTF-8. What the system does not tell is absent; what it should
/// have told stands in `problems`.
struct Adapter
{
    /// Of the interface, IPv4's where the two differ (before Vista). It can change while the machine runs. Absent for
    /// an adapter that is not running.
    std::optional<std::uint32_t> index;
    /// IPv6's own.
    std::optional<std::uint32_t> ipv6Index;
    std::optional<Guid> guid;
    /// Connection name, by which netsh knows it: "Name" of the connection key.
    std::optional<std::string> connectionName;
    /// The address table's name for it; the same on a sound system.
    std::optional<std::string> friendlyName;
    /// Absent where it has none, and for an adapter that is not running.
    std::optional<HardwareAddress> hardwareAddress;
    /// The address table's, or else the driver's.
    std::optional<std::string> description;
    /// Its subkey of the network class key, such as "0007".
    std::optional<std::string> classKey;
    /// Plug and Play device instance path.
    std::optional<std::string> deviceInstance;
    Driver driver;

    std::optional<AdapterType> type;
    std::optional<AdapterKind> kind;
    AdapterStatus status = AdapterStatus::UNKNOWN;
    /// Whether nobody has switched the device off.
    std::optional<bool> enabled;
    /// Whether the device is in the machine.
    std::optional<bool> present;
    /// One of the system's own, which its lists of connections do not show: the loopback, tunnels, and devices that
    /// their driver hides.
    bool hidden = false;
    /// Whether a cable or a network is connected.
    std::optional<bool> mediaConnected;
    std::optional<DeviceProblem> deviceProblem;
    /// Whether the driver exposes the LAN device interface, so that the system shows its property sheet.
    std::optional<bool> canChangeOptions;

    std::optional<std::uint64_t> transmitSpeed; ///< bit/s; absent where it is not known, as without a link
    std::optional<std::uint64_t> receiveSpeed;  ///< bit/s
    std::optional<std::uint32_t> mtu;           ///< of the link, in bytes

    IpSettings ipv4;
    IpSettings ipv6;
    /// Of both families: those in use in the system's order, then those that are only persistent. Absent where the
    /// table of a family could not be read and nothing else is known.
    std::optional<std::vector<Route>> routes;

    std::vector<Problem> problems;

    [[nodiscard]] const IpSettings& Of(Family family) const noexcept { return family == Family::IPV4 ? ipv4 : ipv6; }
    [[nodiscard]] IpSettings& Of(Family family) noexcept { return family == Family::IPV4 ? ipv4 : ipv6; }

    bool operator==(const Adapter&) const = default;
};

/// The connection's name, the friendly name where it has none, the description or the GUID where neither is known.
std::string NameOf(const Adapter& adapter);

/// `\DEVICE\TCPIP_` and the GUID; nothing without one.
std::optional<std::string> DeviceNameOf(const Adapter& adapter);

} // namespace zelk
