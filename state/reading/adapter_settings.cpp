#include <state/reading/adapter_settings.h>

#include <charconv>

#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/stored_key.h>

namespace zelk
{
namespace
{

/// Opens a key of the adapter. One that runs with the protocol has it, unless the adapter has just gone away.
StoredKey OpenOwnKey(Adapter& adapter, const std::wstring& path, bool expected, const char* missing)
{
    StoredKey key(path, adapter.problems);
    if (key.IsMissing() && expected && adapter.index && !adapter.hidden)
        key.ReportMissing(missing);
    return key;
}

void ReadConnection(Adapter& adapter, const std::wstring& guid)
{
    StoredKey key = OpenOwnKey(adapter, CONNECTIONS + (L'\\' + guid) + L"\\Connection", true,
                               "The name of the connection is not known.");
    adapter.connectionName = key.Text(L"Name").value;
    const auto instance = key.Text(L"PnpInstanceID").value;
    if (!adapter.deviceInstance)
        adapter.deviceInstance = instance;
}

/// Two lists that belong together, an address and its mask each.
std::optional<std::vector<IpPrefix>> StaticAddresses(StoredKey& key)
{
    const auto addresses = key.Texts(L"IPAddress");
    const auto masks = key.Texts(L"SubnetMask");
    if (!addresses.readable || !masks.readable)
        return std::nullopt;
    const auto addressTexts = addresses.value.value_or(std::vector<std::string>());
    const auto maskTexts = masks.value.value_or(std::vector<std::string>());
    std::vector<IpPrefix> prefixes;
    for (std::size_t i = 0; i < addressTexts.size(); ++i)
    {
        const auto address = IpAddress::Parse(addressTexts[i]);
        if (!address || !address->IsIpv4())
            return key.Refuse<std::vector<IpPrefix>>(L"IPAddress", "holds something that is not an IPv4 address").value;
        if (address->IsUnspecified())
            continue; // stands for "none"
        const auto mask = i < maskTexts.size() ? IpAddress::Parse(maskTexts[i]) : std::nullopt;
        const auto length = mask ? PrefixLengthOfMask(*mask) : std::nullopt;
        if (!length)
            return key.Refuse<std::vector<IpPrefix>>(L"SubnetMask", "has no mask for an address").value;
        prefixes.push_back({*address, *length});
    }
    return prefixes;
}

/// Of a list of metrics, one for each gateway; 0 and one that is missing mean that the system chooses.
std::optional<std::uint32_t> MetricAt(const std::vector<std::string>& metrics, std::size_t place)
{
    std::uint32_t metric = 0;
    if (place < metrics.size())
        std::from_chars(metrics[place].data(), metrics[place].data() + metrics[place].size(), metric);
    return metric != 0 ? std::optional(metric) : std::nullopt;
}

std::optional<std::vector<Gateway>> StaticGateways(StoredKey& key)
{
    const auto addresses = key.Texts(L"DefaultGateway").Or({});
    const auto metrics = key.Texts(L"DefaultGatewayMetric").Or({});
    if (!addresses || !metrics)
        return std::nullopt;
    std::vector<Gateway> gateways;
    for (std::size_t i = 0; i < addresses->size(); ++i)
    {
        const auto address = IpAddress::Parse((*addresses)[i]);
        if (!address || !address->IsIpv4())
            return key.Refuse<std::vector<Gateway>>(L"DefaultGateway", "holds something that is not an IPv4 address")
                .value;
        if (!address->IsUnspecified())
            gateways.push_back({*address, MetricAt(*metrics, i)});
    }
    return gateways;
}

std::optional<AutomaticOr<std::vector<IpAddress>>> StaticDnsServers(StoredKey& key, Family family)
{
    auto servers = key.AddressesInText(L"NameServer", family).Or({});
    if (!servers)
        return std::nullopt;
    if (servers->empty())
        return Automatic();
    return std::move(*servers);
}

/// 0 and a value that is missing leave it to the system.
std::optional<AutomaticOr<std::uint32_t>> NumberOrAutomatic(StoredKey& key, std::wstring_view name)
{
    const auto number = key.Number(name).Or(0);
    if (!number)
        return std::nullopt;
    return *number != 0 ? AutomaticOr<std::uint32_t>(*number) : Automatic();
}

/// What the registry leaves open is what is in use: from Vista on the system may keep the metric elsewhere.
void ReadInterfaceSettings(StoredKey& key, Family family, const MachineSettings& machine, bool vista,
                           IpSettings& settings)
{
    const bool isActiveKnown = !vista || !machine.unreadInterfaces.contains(family);
    ConfiguredIp& configured = settings.configured;
    configured.dnsServers = StaticDnsServers(key, family);
    configured.dnsSuffix = key.Text(L"Domain").Or({});
    configured.metric = NumberOrAutomatic(key, L"InterfaceMetric");
    if (configured.metric == AutomaticOr<std::uint32_t>() && !isActiveKnown)
        configured.metric.reset();
    else if (configured.metric == AutomaticOr<std::uint32_t>() && settings.automaticMetric == false)
        configured.metric = settings.metric;
    configured.mtu = NumberOrAutomatic(key, L"MTU");
    if (vista && configured.mtu == AutomaticOr<std::uint32_t>())
        configured.mtu.reset();
}

std::optional<std::chrono::sys_seconds> Time(StoredKey& key, std::wstring_view name)
{
    constexpr std::uint32_t NEVER = 0x7FFFFFFF; // and what is beyond, of a lease without end
    const std::uint32_t seconds = key.Number(name).value.value_or(0);
    if (seconds == 0 || seconds >= NEVER)
        return std::nullopt;
    return std::chrono::sys_seconds(std::chrono::seconds(seconds));
}

std::optional<IpPrefix> LeasedAddress(StoredKey& key)
{
    const auto address = key.Address(L"DhcpIPAddress").value;
    const auto mask = key.Address(L"DhcpSubnetMask").value;
    const auto length = mask ? PrefixLengthOfMask(*mask) : std::nullopt;
    if (!address || address->IsUnspecified() || !length)
        return std::nullopt;
    return IpPrefix{*address, *length};
}

std::optional<IpAddress> Server(StoredKey& key)
{
    const auto server = key.Address(L"DhcpServer").value;
    return server && IsDhcpServer(*server) ? server : std::nullopt;
}

/// The values stay when an adapter becomes static or its lease is given back.
void ReadLease(StoredKey& key, IpSettings& settings)
{
    const bool client = settings.dhcp.value_or(settings.configured.dhcp.value_or(false));
    const auto address = LeasedAddress(key);
    if (!client || (!address && !settings.lease))
    {
        settings.lease.reset();
        return;
    }
    if (!settings.lease)
        settings.lease.emplace();
    Lease& lease = *settings.lease;
    lease.address = address;
    if (!lease.server)
        lease.server = Server(key);
    lease.obtained = Time(key, L"LeaseObtainedTime");
    lease.expires = Time(key, L"LeaseTerminatesTime");
    lease.gateways = key.Addresses(L"DhcpDefaultGateway", Family::IPV4).Or({});
    lease.dnsServers = key.AddressesInText(L"DhcpNameServer", Family::IPV4).Or({});
    lease.dnsSuffix = key.Text(L"DhcpDomain").Or({});
}

std::optional<bool> Autoconfiguration(StoredKey& key, const MachineSettings& machine)
{
    const auto own = key.Number(L"IPAutoconfigurationEnabled");
    if (!own.readable)
        return std::nullopt;
    return own.value ? std::optional(*own.value != 0) : machine.autoconfiguration;
}

void ReadIpv4(Adapter& adapter, const std::wstring& guid, const MachineSettings& machine, bool vista)
{
    IpSettings& ipv4 = adapter.ipv4;
    StoredKey key = OpenOwnKey(adapter, IPV4_INTERFACES + guid, ipv4.enabled.value_or(false),
                               "The configured IPv4 settings are not known.");
    ConfiguredIp& configured = ipv4.configured;
    if (const auto dhcp = key.Number(L"EnableDHCP"); dhcp.value)
        configured.dhcp = *dhcp.value != 0;
    configured.addresses = configured.dhcp == true ? std::optional(std::vector<IpPrefix>()) : StaticAddresses(key);
    configured.gateways = StaticGateways(key);
    if (configured.addresses || configured.gateways)
        configured.source = ConfigurationSource::PERSISTENT;
    configured.autoconfiguration = Autoconfiguration(key, machine);
    if (ipv4.enabled == true)
        ipv4.autoconfiguration = configured.autoconfiguration;
    ReadInterfaceSettings(key, Family::IPV4, machine, vista, ipv4);
    ReadLease(key, ipv4);
}

/// The addresses that are stored can be read by no documented means. Those in use of manual origin and without an end
/// are stored, unless a program made them for the time being.
void ConcludeConfigured(Adapter& adapter)
{
    IpSettings& ipv6 = adapter.ipv6;
    if (ipv6.enabled != true)
        return; // nothing is in use to conclude from
    ipv6.configured.source = ConfigurationSource::ACTIVE;
    auto& addresses = ipv6.configured.addresses.emplace();
    for (const Address& address : *ipv6.addresses)
        if (address.origin == AddressOrigin::MANUAL && address.validLifetime == Lifetime() && address.prefixLength)
            addresses.push_back({address.address, *address.prefixLength});
    if (!adapter.routes)
        return;
    auto& gateways = ipv6.configured.gateways.emplace();
    for (const Route& route : *adapter.routes)
        if (!route.nextHop.IsIpv4() && route.destination.length == 0 && !route.nextHop.IsUnspecified() &&
            route.origin == RouteOrigin::MANUAL)
            gateways.push_back({route.nextHop, route.metric});
}

void ReadIpv6(Adapter& adapter, const std::wstring& guid, const MachineSettings& machine, bool vista)
{
    IpSettings& ipv6 = adapter.ipv6;
    StoredKey key = OpenOwnKey(adapter, IPV6_INTERFACES + guid, ipv6.enabled.value_or(false) && vista,
                               "The configured IPv6 settings are not known.");
    if (const auto state = key.Number(L"Dhcpv6State"); state.value)
        ipv6.dhcp = *state.value != 0;
    ReadInterfaceSettings(key, Family::IPV6, machine, vista, ipv6);
    ConcludeConfigured(adapter);
}

/// Of the values 0 to 2 of NetBIOS options; 0 for a value that is missing, nothing for any other.
std::optional<NetbiosSetting> Netbios(StoredKey& key, std::wstring_view name)
{
    const auto number = key.Number(name).Or(0);
    if (!number)
        return std::nullopt;
    switch (*number)
    {
    case 0: return NetbiosSetting::DHCP;
    case 1: return NetbiosSetting::ENABLED;
    case 2: return NetbiosSetting::DISABLED;
    default: return key.Refuse<NetbiosSetting>(name, "is not 0, 1 or 2").value;
    }
}

/// An adapter that NetBIOS over TCP/IP is not bound to has no such key.
void ReadNetbios(Adapter& adapter, const std::wstring& guid)
{
    StoredKey key(NETBIOS_INTERFACES + guid, adapter.problems);
    adapter.ipv4.configured.netbios = Netbios(key, L"NetbiosOptions");
    auto setting = adapter.ipv4.configured.netbios;
    if (setting == NetbiosSetting::DHCP)
        setting = Netbios(key, L"DhcpNetbiosOptions");
    if (setting && adapter.ipv4.enabled == true)
        adapter.ipv4.netbios = *setting != NetbiosSetting::DISABLED;
}

} // namespace

void ReadAdapterSettings(Adapter& adapter, const MachineSettings& machine, bool vista)
{
    if (!adapter.guid)
        return;
    const std::wstring guid = FromUtf8(adapter.guid->ToText());
    ReadConnection(adapter, guid);
    ReadIpv4(adapter, guid, machine, vista);
    ReadIpv6(adapter, guid, machine, vista);
    ReadNetbios(adapter, guid);
}

} // namespace zelk
