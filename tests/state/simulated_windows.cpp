#include <state/simulated_windows.h>

#include <algorithm>
#include <charconv>
#include <map>

using namespace zelk;

namespace
{

using Texts = std::vector<std::string>;

/// The arguments of one netsh command behind the connection's name, with or without their tags.
struct Call
{
    Family family;
    std::string verb;
    std::string object;
    Adapter& adapter;
    Texts words;
    std::map<std::string, std::string> tags;

    [[nodiscard]] std::string Word(std::size_t i) const { return i < words.size() ? words[i] : ""; }
    [[nodiscard]] std::optional<std::uint32_t> Number(const char* tag) const
    {
        const auto found = tags.find(tag);
        return found != tags.end() ? std::optional(static_cast<std::uint32_t>(std::stoul(found->second)))
                                   : std::nullopt;
    }
};

bool Holds(const std::vector<Address>& addresses, const IpAddress& wanted)
{
    return std::ranges::find(addresses, wanted, &Address::address) != addresses.end();
}

bool IsOnLink(const Adapter& adapter, const IpAddress& nextHop)
{
    return nextHop.IsUnspecified() || nextHop.IsLinkLocal() ||
           std::ranges::any_of(*adapter.Of(nextHop.GetFamily()).addresses, [&](const Address& own) {
               return IpPrefix{own.address, *own.prefixLength}.Contains(nextHop);
           });
}

Address Manual(const IpPrefix& prefix)
{
    Address address;
    address.address = prefix.address;
    address.prefixLength = prefix.length;
    address.origin = AddressOrigin::MANUAL;
    address.validLifetime = Lifetime();
    return address;
}

Route MakeRoute(const IpPrefix& destination, const IpAddress& nextHop, std::optional<std::uint32_t> metric)
{
    Route route;
    route.destination = destination;
    route.nextHop = nextHop;
    route.metric = metric.value_or(256);
    route.origin = RouteOrigin::MANUAL;
    route.protocol = RouteProtocol::MANAGEMENT;
    return route;
}

const IpPrefix& DefaultOf(Family family)
{
    static const IpPrefix defaults[] = {*IpPrefix::Parse("0.0.0.0/0"), *IpPrefix::Parse("::/0")};
    return defaults[family == Family::IPV4 ? 0 : 1];
}

bool IsWay(const Route& route, const IpPrefix& destination, const IpAddress& nextHop)
{
    return route.destination == destination && route.nextHop == nextHop && route.store != RouteStore::PERSISTENT;
}

/// Routes go with the address by which their next hop was reached.
void DropUnreachable(Adapter& adapter)
{
    std::erase_if(*adapter.routes, [&](const Route& route) {
        return route.store != RouteStore::PERSISTENT && !IsOnLink(adapter, route.nextHop);
    });
}

/// Nothing for an address that the command refuses as a parameter.
std::optional<IpPrefix> Host(const std::string& address, const std::string& mask)
{
    const auto host = IpAddress::Parse(address);
    const auto bits = IpAddress::Parse(mask);
    const auto length = bits ? PrefixLengthOfMask(*bits) : std::nullopt;
    if (!host || !length || host->IsMulticast() || host->IsLoopback() || host->IsUnspecified())
        return std::nullopt;
    return IpPrefix{*host, *length};
}

bool AddGateway(Adapter& adapter, const std::string& text, std::optional<std::uint32_t> metric)
{
    const auto gateway = IpAddress::Parse(text);
    auto& stored = *adapter.ipv4.configured.gateways;
    if (!gateway || !IsOnLink(adapter, *gateway) ||
        std::ranges::find(stored, *gateway, &Gateway::address) != stored.end())
        return false;
    stored.push_back({*gateway, metric});
    adapter.routes->push_back(MakeRoute(DefaultOf(Family::IPV4), *gateway, metric));
    return true;
}

bool SetAddress(const Call& call)
{
    Adapter& adapter = call.adapter;
    IpSettings& ipv4 = adapter.ipv4;
    const bool client = call.Word(0) == "dhcp";
    const auto host = client ? std::nullopt : Host(call.Word(1), call.Word(2));
    if (client ? *ipv4.configured.dhcp : !host)
        return false;
    ipv4.addresses->clear();
    ipv4.configured.addresses->clear();
    ipv4.configured.gateways->clear();
    std::erase_if(*adapter.routes,
                  [](const Route& route) { return route.nextHop.IsIpv4() && route.store != RouteStore::PERSISTENT; });
    ipv4.configured.dhcp = client;
    ipv4.addresses->push_back(Manual(client ? *IpPrefix::Parse("198.18.0.77/24") : *host));
    if (client)
    {
        ipv4.addresses->back().origin = AddressOrigin::DHCP;
        adapter.routes->push_back(MakeRoute(DefaultOf(Family::IPV4), *IpAddress::Parse("198.18.0.1"), 0));
        return true;
    }
    ipv4.configured.addresses->push_back(*host);
    const std::string metric = call.Word(4);
    return call.words.size() < 4 ||
           AddGateway(adapter, call.Word(3),
                      metric.empty() ? std::nullopt : std::optional(static_cast<std::uint32_t>(std::stoul(metric))));
}

bool AddIpv4(const Call& call)
{
    Adapter& adapter = call.adapter;
    if (!call.words.empty())
    {
        const auto host = Host(call.Word(0), call.Word(1));
        if (!host || *adapter.ipv4.configured.dhcp || Holds(*adapter.ipv4.addresses, host->address))
            return false;
        adapter.ipv4.addresses->push_back(Manual(*host));
        adapter.ipv4.configured.addresses->push_back(*host);
    }
    const auto gateway = call.tags.find("gateway");
    return gateway == call.tags.end() || AddGateway(adapter, gateway->second, call.Number("gwmetric"));
}

bool DeleteIpv4(const Call& call)
{
    Adapter& adapter = call.adapter;
    if (const auto tag = call.tags.find("gateway"); tag != call.tags.end())
    {
        const auto gateway = *IpAddress::Parse(tag->second);
        std::erase_if(*adapter.routes,
                      [&](const Route& route) { return IsWay(route, DefaultOf(Family::IPV4), gateway); });
        return std::erase_if(*adapter.ipv4.configured.gateways,
                             [&](const Gateway& one) { return one.address == gateway; }) != 0;
    }
    const auto address = IpAddress::Parse(call.Word(0));
    if (!address || !Holds(*adapter.ipv4.addresses, *address))
        return false;
    std::erase_if(*adapter.ipv4.addresses, [&](const Address& one) { return one.address == *address; });
    std::erase_if(*adapter.ipv4.configured.addresses, [&](const IpPrefix& one) { return one.address == *address; });
    DropUnreachable(adapter);
    return true;
}

bool ChangeIpv6(const Call& call)
{
    auto& addresses = *call.adapter.ipv6.addresses;
    if (call.verb == "add")
    {
        const auto prefix = IpPrefix::Parse(call.Word(0));
        if (!prefix || Holds(addresses, prefix->address))
            return false;
        addresses.push_back(Manual(*prefix));
        return true;
    }
    const auto address = IpAddress::Parse(call.Word(0));
    const auto same = [&](const Address& one) { return one.address == *address; };
    const bool done = address && std::erase_if(addresses, same) != 0;
    DropUnreachable(call.adapter);
    return done;
}

bool ChangeAddress(const Call& call)
{
    if (call.family == Family::IPV6)
        return ChangeIpv6(call);
    return call.verb == "set" ? SetAddress(call) : call.verb == "add" ? AddIpv4(call) : DeleteIpv4(call);
}

/// The connection's name stands behind the destination.
bool ChangeRoute(const Call& call, const std::string& destination)
{
    auto& routes = *call.adapter.routes;
    const auto prefix = IpPrefix::Parse(destination);
    const auto nextHop =
        call.words.empty() ? IpAddress::Unspecified(call.family) : IpAddress::Parse(call.Word(0)).value();
    const auto same = std::ranges::find_if(routes, [&](const Route& route) { return IsWay(route, *prefix, nextHop); });
    if ((call.verb == "add") != (same == routes.end()) || !IsOnLink(call.adapter, nextHop))
        return false;
    if (call.verb == "add")
        routes.push_back(MakeRoute(*prefix, nextHop, call.Number("metric")));
    else if (call.verb == "delete")
        routes.erase(same);
    else
        same->metric = call.Number("metric");
    return true;
}

bool ChangeServers(const Call& call)
{
    auto& configured = *call.adapter.Of(call.family).configured.dnsServers;
    using Servers = std::vector<IpAddress>;
    if (call.verb == "add")
    {
        auto& servers = std::get<Servers>(configured);
        if (call.Number("index") != servers.size() + 1)
            return false;
        servers.push_back(*IpAddress::Parse(call.Word(0)));
    }
    else if (call.Word(0) == "dhcp")
        configured = Automatic();
    else
        configured = Servers{*IpAddress::Parse(call.Word(1))};
    return true;
}

bool ChangeInterface(const Call& call)
{
    IpSettings& settings = call.adapter.Of(call.family);
    if (call.object == "subinterface")
        settings.mtu = call.Number("mtu");
    else
    {
        settings.automaticMetric = call.Number("metric") == 0u;
        settings.metric = *settings.automaticMetric ? 25 : call.Number("metric");
    }
    return true;
}

void SettleFamily(Adapter& adapter, Family family)
{
    IpSettings& settings = adapter.Of(family);
    if (!adapter.routes || !settings.addresses || !settings.configured.dnsServers)
        return; // not known
    settings.gateways.emplace();
    for (const Route& route : *adapter.routes)
        if (route.destination.length == 0 && route.nextHop.GetFamily() == family)
            settings.gateways->push_back({route.nextHop, route.metric});
    const auto* const servers = std::get_if<std::vector<IpAddress>>(&*settings.configured.dnsServers);
    settings.dnsServers = servers != nullptr ? *servers : std::vector<IpAddress>();
    if (family == Family::IPV4)
        return;
    settings.configured.addresses.emplace();
    for (const Address& address : *settings.addresses)
        if (address.origin == AddressOrigin::MANUAL)
            settings.configured.addresses->push_back({address.address, *address.prefixLength});
    settings.configured.gateways = settings.gateways;
}

} // namespace

Adapter& SimulatedWindows::Add(const std::string& name)
{
    Adapter& adapter = machine.adapters.emplace_back();
    const auto number = static_cast<std::uint32_t>(machine.adapters.size());
    adapter.index = number;
    adapter.guid = Guid::Parse("{0000000" + std::to_string(number) + "-0000-0000-0000-000000000000}");
    adapter.connectionName = name;
    adapter.status = AdapterStatus::UP;
    adapter.enabled = true;
    adapter.deviceInstance = "PCI\\" + name;
    adapter.classKey = "0001";
    adapter.routes.emplace();
    for (const Family family : FAMILIES)
    {
        IpSettings& settings = adapter.Of(family);
        settings.enabled = true;
        settings.dhcp = false;
        settings.addresses.emplace();
        settings.automaticMetric = true;
        settings.metric = 25;
        settings.mtu = 1500;
        settings.configured.addresses.emplace();
        settings.configured.gateways.emplace();
        settings.configured.dnsServers = Automatic();
    }
    adapter.ipv4.configured.dhcp = false;
    adapter.ipv4.configured.dnsSuffix = "";
    adapter.ipv4.configured.netbios = NetbiosSetting::DHCP;
    machine.environment.protocolBinding = true;
    Settle();
    return adapter;
}

Adapter& SimulatedWindows::Find(const std::string& name)
{
    return *std::ranges::find(machine.adapters, name, &Adapter::connectionName);
}

void SimulatedWindows::Settle()
{
    for (Adapter& adapter : machine.adapters)
        for (const Family family : FAMILIES)
            SettleFamily(adapter, family);
}

bool SimulatedWindows::Perform(const Step& step)
{
    if (refuse >= 0 && refuse-- == 0)
        return false;
    const auto adapter = std::ranges::find(machine.adapters, step.guid, &Adapter::guid);
    Adapter* const own = adapter != machine.adapters.end() ? &*adapter : nullptr;
    const bool done = std::visit([&](const auto& action) { return Perform(action, own); }, step.action);
    Settle();
    return done;
}

bool SimulatedWindows::Perform(const Command& command, Adapter*)
{
    const Texts& arguments = command.arguments;
    const bool ofRoute = arguments.at(3) == "route";
    const std::string& name = arguments.at(ofRoute ? 5 : 4);
    const auto adapter = std::ranges::find(machine.adapters, name, &Adapter::connectionName);
    if (adapter == machine.adapters.end())
        return false;
    Call call{arguments[1] == "ipv6" ? Family::IPV6 : Family::IPV4, arguments[2], arguments[3], *adapter, {}, {}};
    for (std::size_t i = ofRoute ? 6 : 5; i < arguments.size(); ++i)
    {
        const std::size_t equal = arguments[i].find('=');
        if (equal == std::string::npos)
            call.words.push_back(arguments[i]);
        else
            call.tags[arguments[i].substr(0, equal)] = arguments[i].substr(equal + 1);
    }
    if (ofRoute)
        return ChangeRoute(call, arguments[4]);
    if (call.object == "address")
        return ChangeAddress(call);
    return call.object == "dnsservers" ? ChangeServers(call) : ChangeInterface(call);
}

bool SimulatedWindows::Perform(const StoredRoute& stored, Adapter*)
{
    for (Adapter& adapter : machine.adapters)
    {
        const auto same = std::ranges::find_if(*adapter.routes, [&](const Route& route) {
            return route.destination == stored.destination && route.nextHop == stored.nextHop;
        });
        if (same == adapter.routes->end())
            continue;
        if (stored.wanted)
            same->store = RouteStore::BOTH;
        else if (same->store == RouteStore::PERSISTENT)
            adapter.routes->erase(same);
        else
            same->store = RouteStore::ACTIVE;
        return true;
    }
    return !stored.wanted; // what is no longer there need not be removed
}

bool SimulatedWindows::Perform(const StoredSetting& setting, Adapter* adapter)
{
    ConfiguredIp& configured = adapter->ipv4.configured;
    if (const auto* const suffix = std::get_if<std::string>(&setting.value))
        configured.dnsSuffix = *suffix;
    else if (const auto* const netbios = std::get_if<NetbiosSetting>(&setting.value))
        configured.netbios = *netbios;
    else
        configured.gateways = std::get<std::vector<Gateway>>(setting.value);
    return true;
}

bool SimulatedWindows::Perform(const Ipv6Binding& binding, Adapter* adapter)
{
    adapter->ipv6.enabled = binding.wanted;
    return true;
}

bool SimulatedWindows::Perform(const LibraryCall& call, Adapter*)
{
    if (call.operation == LibraryOperation::SET_COMPUTER_NAME)
        machine.identity.configured.computerName = call.argument;
    return true;
}
