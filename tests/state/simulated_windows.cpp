#include <state/simulated_windows.h>

#include <algorithm>
#include <map>

#include <state/desired/host_address.h>

using namespace zelk;

namespace
{

using Servers = std::vector<IpAddress>;
using Texts = std::vector<std::string>;

/// The parameters that a command of netsh has, in the order in which they can be given without their tags.
struct Signature
{
    const char* context; ///< of a system before Vista: "ip"
    const char* verb;
    const char* object;
    Texts parameters;
};

const Signature SIGNATURES[] = {
    {"ipv4", "set", "address", {"name", "source", "address", "mask", "gateway", "gwmetric", "type", "store"}},
    {"ipv4", "add", "address", {"name", "address", "mask", "type", "gateway", "gwmetric", "store"}},
    {"ipv4", "delete", "address", {"name", "address", "gateway", "store"}},
    {"ipv6", "add", "address", {"interface", "address", "type", "validlifetime", "preferredlifetime", "store"}},
    {"ipv6", "delete", "address", {"interface", "address", "store"}},
    {"ipv?", "set", "dnsservers", {"name", "source", "address", "register", "validate"}},
    {"ipv?", "add", "dnsservers", {"name", "address", "index", "validate"}},
    {"ipv?", "set", "dnsserver", {"name", "source", "address", "register"}},
    {"ipv?", "add", "dnsserver", {"name", "address", "index"}},
    {"ipv?", "set", "interface", {"interface", "metric", "store"}},
    {"ipv?", "set", "subinterface", {"interface", "mtu", "subinterface", "store"}},
    {"ipv?", "add", "route", {"prefix", "interface", "nexthop", "siteprefixlength", "metric", "publish", "store"}},
    {"ipv?", "set", "route", {"prefix", "interface", "nexthop", "siteprefixlength", "metric", "publish", "store"}},
    {"ipv?", "delete", "route", {"prefix", "interface", "nexthop", "store"}},
    {"ip", "set", "address", {"name", "source", "addr", "mask", "gateway", "gwmetric"}},
    {"ip", "add", "address", {"name", "addr", "mask", "gateway", "gwmetric"}},
    {"ip", "delete", "address", {"name", "addr", "gateway"}},
    {"ip", "set", "dns", {"name", "source", "addr", "register"}},
    {"ip", "add", "dns", {"name", "addr", "index"}},
};

/// One command of netsh with its parameters.
struct Call
{
    Family family = Family::IPV4;
    std::string verb;
    std::string object;
    std::map<std::string, std::string> parameters;

    [[nodiscard]] bool Has(const char* name) const { return parameters.contains(name); }
    [[nodiscard]] std::string Get(const char* name) const { return Has(name) ? parameters.at(name) : ""; }
    [[nodiscard]] std::string Name() const { return Get(Has("name") ? "name" : "interface"); }
    [[nodiscard]] std::string Address() const { return Get(Has("addr") ? "addr" : "address"); }
    [[nodiscard]] std::optional<std::uint32_t> Number(const char* name) const
    {
        return Has(name) ? std::optional(static_cast<std::uint32_t>(std::stoul(Get(name)))) : std::nullopt;
    }
};

bool FillIn(const Texts& names, const Texts& arguments, std::map<std::string, std::string>& parameters)
{
    std::size_t next = 0;
    for (const std::string& argument : arguments)
    {
        const std::size_t equal = argument.find('=');
        if (equal == std::string::npos && next == names.size())
            return false;
        const std::string name = equal == std::string::npos ? names[next++] : argument.substr(0, equal);
        if (std::ranges::find(names, name) == names.end() || parameters.contains(name))
            return false;
        parameters[name] = equal == std::string::npos ? argument : argument.substr(equal + 1);
        if (equal != std::string::npos)
            next = names.size(); // what has no tag stands before what has one
    }
    return true;
}

/// Nothing for a command that this system does not have, or not with these parameters.
std::optional<Call> Parse(const Texts& arguments, const Environment& system)
{
    if (arguments.size() < 5 || arguments[0] != "interface")
        return std::nullopt;
    const bool old = system.backEnd == BackEnd::PRE_VISTA;
    const bool vista = system.majorVersion == 6 && system.minorVersion == 0;
    for (const Signature& signature : SIGNATURES)
    {
        const std::string context = signature.context;
        const bool ofFamily = context == arguments[1] || (context == "ipv?" && arguments[1].starts_with("ipv"));
        const bool known = old == (context == "ip") && vista == (signature.object == std::string("dnsserver"));
        const bool ofDns = std::string(signature.object).starts_with("dnsserver");
        if (!ofFamily || !(known || (!ofDns && old == (context == "ip"))) || arguments[2] != signature.verb ||
            arguments[3] != signature.object)
            continue;
        Call call{arguments[1] == "ipv6" ? Family::IPV6 : Family::IPV4, arguments[2], arguments[3], {}};
        if (FillIn(signature.parameters, {arguments.begin() + 4, arguments.end()}, call.parameters))
            return call;
    }
    return std::nullopt;
}

} // namespace

Lease LeaseFor(const Adapter& adapter)
{
    const std::string net = "198.18." + std::to_string(*adapter.index % 256);
    Lease lease;
    lease.address = IpPrefix::Parse(net + ".77/24");
    lease.server = IpAddress::Parse(net + ".2");
    lease.gateways = Servers{*IpAddress::Parse(net + ".1")};
    lease.dnsServers = Servers{*IpAddress::Parse(net + ".53")};
    return lease;
}

namespace
{

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
    if (!host || !length || !RefuseAsHost({*host, *length}).empty())
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

void TakeLease(Adapter& adapter)
{
    const Lease& lease = adapter.ipv4.lease.emplace(LeaseFor(adapter));
    adapter.ipv4.addresses->push_back(Manual(*lease.address));
    adapter.ipv4.addresses->back().origin = AddressOrigin::DHCP;
    adapter.routes->push_back(MakeRoute(DefaultOf(Family::IPV4), lease.gateways->front(), 0));
}

/// Replaces everything, and all routes go with the addresses.
bool SetAddress(const Call& call, Adapter& adapter)
{
    IpSettings& ipv4 = adapter.ipv4;
    const bool client = call.Get("source") == "dhcp";
    const auto host = client ? std::nullopt : Host(call.Address(), call.Get("mask"));
    if (client ? *ipv4.configured.dhcp : !host || call.Get("source") != "static")
        return false;
    ipv4.addresses->clear();
    ipv4.configured.addresses->clear();
    ipv4.configured.gateways->clear();
    ipv4.lease.reset();
    std::erase_if(*adapter.routes,
                  [](const Route& route) { return route.nextHop.IsIpv4() && route.store != RouteStore::PERSISTENT; });
    ipv4.configured.dhcp = client;
    if (client)
        return true;
    ipv4.addresses->push_back(Manual(*host));
    ipv4.configured.addresses->push_back(*host);
    return !call.Has("gateway") || call.Get("gateway") == "none" ||
           AddGateway(adapter, call.Get("gateway"), call.Number("gwmetric"));
}

bool AddIpv4(const Call& call, Adapter& adapter)
{
    if (*adapter.ipv4.configured.dhcp)
        return false;
    if (!call.Address().empty())
    {
        const auto host = Host(call.Address(), call.Get("mask"));
        if (!host || Holds(*adapter.ipv4.addresses, host->address))
            return false;
        adapter.ipv4.addresses->push_back(Manual(*host));
        adapter.ipv4.configured.addresses->push_back(*host);
    }
    return !call.Has("gateway") || AddGateway(adapter, call.Get("gateway"), call.Number("gwmetric"));
}

bool DeleteIpv4(const Call& call, Adapter& adapter)
{
    if (*adapter.ipv4.configured.dhcp)
        return false;
    if (call.Has("gateway"))
    {
        const auto gateway = *IpAddress::Parse(call.Get("gateway"));
        const auto active = std::erase_if(
            *adapter.routes, [&](const Route& route) { return IsWay(route, DefaultOf(Family::IPV4), gateway); });
        const auto stored = std::erase_if(*adapter.ipv4.configured.gateways,
                                          [&](const Gateway& one) { return one.address == gateway; });
        return active + stored != 0;
    }
    const auto same = [&](const auto& one) { return one.address == IpAddress::Parse(call.Address()); };
    const auto active = std::erase_if(*adapter.ipv4.addresses, same);
    const auto stored = std::erase_if(*adapter.ipv4.configured.addresses, same);
    DropUnreachable(adapter);
    return active + stored != 0;
}

bool ChangeIpv6(const Call& call, Adapter& adapter)
{
    auto& addresses = *adapter.ipv6.addresses;
    if (call.verb == "add")
    {
        const auto prefix = IpPrefix::Parse(call.Address());
        if (!prefix || !RefuseAsHost(*prefix).empty() || Holds(addresses, prefix->address))
            return false;
        addresses.push_back(Manual(*prefix));
        return true;
    }
    const auto address = IpAddress::Parse(call.Address());
    const auto same = [&](const Address& one) { return one.address == *address; };
    const bool done = address && std::erase_if(addresses, same) != 0;
    DropUnreachable(adapter);
    return done;
}

bool ChangeAddress(const Call& call, Adapter& adapter)
{
    if (call.family == Family::IPV6)
        return ChangeIpv6(call, adapter);
    return call.verb == "set"   ? SetAddress(call, adapter)
           : call.verb == "add" ? AddIpv4(call, adapter)
                                : DeleteIpv4(call, adapter);
}

/// What is not said to be active alone is stored too.
bool ChangeRoute(const Call& call, Adapter& adapter)
{
    auto& routes = *adapter.routes;
    const auto prefix = IpPrefix::Parse(call.Get("prefix"));
    const auto nextHop =
        call.Has("nexthop") ? IpAddress::Parse(call.Get("nexthop")).value() : IpAddress::Unspecified(call.family);
    const auto same = std::ranges::find_if(routes, [&](const Route& route) { return IsWay(route, *prefix, nextHop); });
    if ((call.verb == "add") != (same == routes.end()) || !IsOnLink(adapter, nextHop))
        return false;
    const bool stored = call.Get("store") != "active" && call.family == Family::IPV4;
    if (call.verb == "delete")
        routes.erase(same);
    else if (call.verb == "set")
        same->metric = call.Number("metric");
    else
    {
        const auto again = std::erase_if(routes, [&](const Route& route) { // one that was only stored
            return route.destination == *prefix && route.nextHop == nextHop;
        });
        routes.push_back(MakeRoute(*prefix, nextHop, call.Number("metric")));
        routes.back().store = stored || again > 0 ? RouteStore::BOTH : RouteStore::ACTIVE;
    }
    return true;
}

/// A server that does not answer is taken all the same.
bool ChangeServers(const Call& call, Adapter& adapter)
{
    auto& configured = *adapter.Of(call.family).configured.dnsServers;
    if (call.verb == "add")
    {
        auto* const servers = std::get_if<Servers>(&configured);
        const std::size_t count = servers != nullptr ? servers->size() : 0;
        if (servers == nullptr || call.Number("index").value_or(count + 1) != count + 1 ||
            std::ranges::find(*servers, *IpAddress::Parse(call.Address())) != servers->end())
            return false;
        servers->push_back(*IpAddress::Parse(call.Address()));
    }
    else if (call.Get("source") == "dhcp" && (call.object != "dns" || *adapter.ipv4.configured.dhcp))
        configured = Automatic();
    else if (call.Get("source") == "static" && call.Address() == "none")
        configured = Automatic();
    else if (call.Get("source") == "static")
        configured = Servers{*IpAddress::Parse(call.Address())};
    else
        return false;
    return true;
}

bool ChangeInterface(const Call& call, Adapter& adapter)
{
    IpSettings& settings = adapter.Of(call.family);
    if (call.object == "subinterface")
    {
        settings.mtu = call.Number("mtu");
        return true;
    }
    settings.automaticMetric = call.Number("metric") == 0u;
    settings.metric = *settings.automaticMetric ? 25 : call.Number("metric");
    settings.configured.metric = *settings.automaticMetric ? AutomaticOr<std::uint32_t>() : *settings.metric;
    return true;
}

bool Change(const Call& call, Adapter& adapter)
{
    if (call.object == "route")
        return ChangeRoute(call, adapter);
    if (call.object == "address")
        return ChangeAddress(call, adapter);
    return call.object.starts_with("dns") ? ChangeServers(call, adapter) : ChangeInterface(call, adapter);
}

/// The route command: [-p] ADD|CHANGE|DELETE network MASK mask nexthop [METRIC number] IF index
std::optional<Call> ParseRoute(Texts arguments)
{
    Call call;
    call.object = "route";
    call.parameters["store"] = "active";
    if (arguments.at(0) == "-p")
    {
        call.parameters["store"] = "persistent";
        arguments.erase(arguments.begin());
    }
    call.verb = arguments.at(0) == "CHANGE" ? "set" : arguments[0] == "ADD" ? "add" : "delete";
    const auto mask = IpAddress::Parse(arguments.at(3));
    const auto length = mask ? PrefixLengthOfMask(*mask) : std::nullopt;
    if (arguments.at(2) != "MASK" || !length)
        return std::nullopt;
    call.parameters["prefix"] = arguments.at(1) + '/' + std::to_string(*length);
    call.parameters["nexthop"] = arguments.at(4);
    for (std::size_t i = 5; i + 1 < arguments.size(); i += 2)
        call.parameters[arguments[i] == "METRIC" ? "metric" : "interface"] = arguments[i + 1];
    return call;
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
    const auto* const servers = std::get_if<Servers>(&*settings.configured.dnsServers);
    const Servers leased = settings.lease ? settings.lease->dnsServers.value_or(Servers()) : Servers();
    settings.dnsServers = servers != nullptr ? *servers : leased;
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
    machine.environment.majorVersion = 10;
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
    const auto adapter = std::ranges::find(machine.adapters, step.guid, &Adapter::guid);
    Adapter* const own = adapter != machine.adapters.end() ? &*adapter : nullptr;
    const bool done = std::visit([&](const auto& action) { return Perform(action, own); }, step.action);
    Settle();
    return done;
}

bool SimulatedWindows::Perform(const Command& command, Adapter*)
{
    const bool ofRoute = command.program == Program::ROUTE;
    const auto call = ofRoute ? ParseRoute(command.arguments) : Parse(command.arguments, machine.environment);
    if (!call)
        return false;
    const auto adapter = std::ranges::find_if(machine.adapters, [&](const Adapter& one) {
        if (ofRoute && !call->Has("interface")) // the one that reaches the next hop
            return std::ranges::any_of(*one.ipv4.configured.addresses, [&](const IpPrefix& address) {
                return address.Contains(*IpAddress::Parse(call->Get("nexthop")));
            });
        return ofRoute ? std::to_string(one.index.value_or(0)) == call->Name() : one.connectionName == call->Name();
    });
    if (adapter == machine.adapters.end())
        return false;
    for (const Adapter& other : machine.adapters)
        if (const auto address = IpAddress::Parse(call->Address());
            address && call->object == "address" && call->verb != "delete" && &other != &*adapter &&
            Holds(other.Of(call->family).addresses.value_or(std::vector<Address>()), *address))
            return false;
    const bool done = Change(*call, *adapter);
    if (done && call->object == "address" && call->Get("source") == "dhcp" && dhcpServer)
        TakeLease(*adapter);
    return done;
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

bool SimulatedWindows::Perform(const LibraryCall& call, Adapter* adapter)
{
    switch (call.operation)
    {
    case LibraryOperation::ENABLE_ADAPTER: adapter->enabled = true; break;
    case LibraryOperation::DISABLE_ADAPTER: adapter->enabled = false; break;
    case LibraryOperation::SET_HARDWARE_ADDRESS:
        adapter->driver.hardwareAddress = HardwareAddress::Parse(call.argument);
        adapter->hardwareAddress = adapter->driver.hardwareAddress;
        break;
    case LibraryOperation::SET_COMPUTER_NAME: machine.identity.configured.computerName = call.argument; break;
    case LibraryOperation::SET_PRIMARY_DNS_SUFFIX: machine.identity.configured.primaryDnsSuffix = call.argument; break;
    case LibraryOperation::SET_WORKGROUP_NAME: machine.identity.workgroup = call.argument; break;
    }
    return true;
}
