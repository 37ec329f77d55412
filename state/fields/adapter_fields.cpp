#include <state/fields/item.h>

namespace zelk
{
namespace
{

constexpr Field<Adapter> ADAPTER[] = {
    Item<Adapter, NameOf>("name", "Name", "Name of the connection, or else the next best name."),
    Item<Adapter, &Adapter::status>("status", "Status", "How the adapter stands."),
    Item<Adapter, &Adapter::index>("index", "Index", "Interface index; it can change while the machine runs."),
    Item<Adapter, &Adapter::ipv6Index>("ipv6Index", "IPv6 index", "Interface index of IPv6."),
    Item<Adapter, &Adapter::guid>("guid", "GUID", "GUID of the adapter."),
    Item<Adapter, &Adapter::hardwareAddress>("hardwareAddress", "Hardware address", "Link-layer (MAC) address in use."),
    Item<Adapter, &Adapter::type>("type", "Type", "What the adapter is to the protocols."),
    Item<Adapter, &Adapter::kind>("kind", "Kind", "Whether there is hardware behind it."),
    Item<Adapter, &Adapter::description>("description", "Description", "What the system calls the device."),
    Item<Adapter, &Adapter::connectionName>("connectionName", "Connection name",
                                            "Name of the connection in the registry, by which netsh knows it."),
    Item<Adapter, &Adapter::friendlyName>("friendlyName", "Friendly name",
                                          "Name of the connection in the address table."),
    Item<Adapter, DeviceNameOf>("deviceName", "Device name", "Name of the adapter's device for TCP/IP."),
    Item<Adapter, &Adapter::classKey>("classKey", "Class key", "Subkey of the network class key."),
    Item<Adapter, &Adapter::deviceInstance>("deviceInstance", "Device instance", "Plug and Play device instance path."),
    Item<Adapter, &Adapter::driver>("driver", "Driver", "The software of the device."),
    Item<Adapter, &Adapter::enabled>("enabled", "Enabled", "Whether nobody has disabled the device."),
    Item<Adapter, &Adapter::present>("present", "Present", "Whether the device is in the machine."),
    Item<Adapter, &Adapter::hidden>("hidden", "Hidden", "Whether it is one of the system's own."),
    Item<Adapter, &Adapter::mediaConnected>("mediaConnected", "Media connected",
                                            "Whether a cable or a network is connected."),
    Item<Adapter, &Adapter::deviceProblem>("deviceProblem", "Device problem", "Why the device does not run."),
    Item<Adapter, &Adapter::canChangeOptions>("canChangeOptions", "Can change options",
                                              "Whether the system shows a property sheet of the device."),
    Item<Adapter, &Adapter::transmitSpeed>("transmitSpeed", "Transmit speed", "Speed of the link.", "bit/s"),
    Item<Adapter, &Adapter::receiveSpeed>("receiveSpeed", "Receive speed", "Speed of the link.", "bit/s"),
    Item<Adapter, &Adapter::mtu>("mtu", "MTU", "Largest packet of the link.", "bytes"),
    Item<Adapter, &Adapter::ipv4>("ipv4", "IPv4", "What the adapter uses of IPv4, and what is configured."),
    Item<Adapter, &Adapter::ipv6>("ipv6", "IPv6", "What the adapter uses of IPv6, and what is configured."),
    Item<Adapter, &Adapter::routes>("routes", "Routes", "Routes over the adapter, of both families."),
    Item<Adapter, &Adapter::problems>("problems", "Problems", "What could not be read of this adapter."),
};

constexpr Field<Driver> DRIVER[] = {
    Item<Driver, &Driver::description>("description", "Driver description", "What the driver calls the device."),
    Item<Driver, &Driver::provider>("provider", "Driver provider", "Who provides the driver."),
    Item<Driver, &Driver::version>("version", "Driver version", "Version of the driver."),
    Item<Driver, &Driver::date>("date", "Driver date", "Date of the driver, as YYYY-MM-DD."),
    Item<Driver, &Driver::speedDuplex>("speedDuplex", "Speed and duplex", "The driver's speed and duplex setting."),
    Item<Driver, &Driver::hardwareAddress>("hardwareAddress", "Configured hardware address",
                                           "The hardware address that the driver is told to use; null for its own."),
};

constexpr Field<DeviceProblem> DEVICE_PROBLEM[] = {
    Item<DeviceProblem, &DeviceProblem::code>("code", "Problem code", "Code of the device manager."),
    Item<DeviceProblem, &DeviceProblem::text>("text", "Problem", "What the code means."),
};

} // namespace

template <>
FieldTable<Adapter> FieldsOf()
{
    return {"adapter", ADAPTER};
}

template <>
FieldTable<Driver> FieldsOf()
{
    return {"driver", DRIVER};
}

template <>
FieldTable<DeviceProblem> FieldsOf()
{
    return {"deviceProblem", DEVICE_PROBLEM};
}

} // namespace zelk
