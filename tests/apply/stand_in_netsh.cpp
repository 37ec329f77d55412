// Stands in for the system's netsh, route and ipconfig: does what the simulated Windows does, and writes it to the
// kernel of the network namespace and to the registry as Windows keeps it. The environment can have it refuse a command
// that holds a text, take seconds for it, end, hang or print without end when it has done it, do nothing and report
// success, have somebody else change the first link's servers at the same time, or have no DHCP server answer.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <set>

#include <e2e/unix_command.h>
#include <state/apply/stored_routes.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <state/simulated_windows.h>
#include <support/registry_scope.h>

using namespace testing_support;
using namespace zelk;

namespace
{

const std::vector<Family> ALL(std::begin(FAMILIES), std::end(FAMILIES));

void SetList(const std::wstring& key, const wchar_t* name, const std::vector<std::string>& texts)
{
    std::vector<std::wstring> wide;
    std::ranges::transform(texts, std::back_inserter(wide), FromUtf8);
    SetValue(key, name, ListData(wide));
}

void WriteIpv4(const std::wstring& key, const ConfiguredIp& configured)
{
    std::vector<std::string> addresses, masks, gateways, metrics;
    for (const IpPrefix& prefix : *configured.addresses)
    {
        addresses.push_back(prefix.address.ToText());
        constexpr IpAddress::Ipv4Bytes ALL_ONES = {255, 255, 255, 255};
        masks.push_back(IpPrefix{IpAddress(ALL_ONES), prefix.length}.Network().address.ToText());
    }
    for (const Gateway& gateway : *configured.gateways)
    {
        gateways.push_back(gateway.address.ToText());
        metrics.push_back(std::to_string(gateway.metric.value_or(0)));
    }
    SetValue(key, L"EnableDHCP", DwordData(*configured.dhcp ? 1 : 0));
    SetList(key, L"IPAddress", addresses);
    SetList(key, L"SubnetMask", masks);
    SetList(key, L"DefaultGateway", gateways);
    SetList(key, L"DefaultGatewayMetric", metrics);
}

void SetText(const std::wstring& key, const wchar_t* name, const std::string& text)
{
    SetValue(key, name, StringData(FromUtf8(text)));
}

std::string Join(const std::vector<IpAddress>& addresses, const char* separator)
{
    std::string text;
    for (const IpAddress& address : addresses)
        text += (text.empty() ? "" : separator) + address.ToText();
    return text;
}

void WriteServers(const std::wstring& key, const ConfiguredIp& configured)
{
    const auto* const servers = std::get_if<std::vector<IpAddress>>(&*configured.dnsServers);
    SetText(key, L"NameServer", servers != nullptr ? Join(*servers, ",") : "");
}

void WriteLease(const std::wstring& key, const Lease& lease)
{
    SetText(key, L"DhcpIPAddress", lease.address->address.ToText());
    SetText(key, L"DhcpSubnetMask", "255.255.255.0");
    SetText(key, L"DhcpServer", lease.server->ToText());
    SetText(key, L"DhcpNameServer", Join(*lease.dnsServers, " "));
    SetList(key, L"DhcpDefaultGateway", {lease.gateways->front().ToText()});
}

void WriteMetric(const std::wstring& key, const ConfiguredIp& configured)
{
    const auto* const metric = configured.metric ? std::get_if<std::uint32_t>(&*configured.metric) : nullptr;
    SetValue(key, L"InterfaceMetric", DwordData(metric != nullptr ? *metric : 0));
}

/// Routes that are no longer stored, or only now.
void WriteStoredRoutes(const Adapter& before, const Adapter& after)
{
    const auto stored = [](const Adapter& adapter) {
        std::vector<StoredRoute> routes;
        for (const Route& route : *adapter.routes)
            if (route.store != RouteStore::ACTIVE && route.destination.length > 0)
                routes.push_back({route.destination, route.nextHop, route.metric, true});
        return routes;
    };
    const auto old = stored(before), now = stored(after);
    for (StoredRoute route : old)
        if (std::ranges::find(now, route) == now.end())
        {
            route.wanted = false;
            ChangeStoredRoute(route);
        }
    for (const StoredRoute& route : now)
        if (std::ranges::find(old, route) == old.end())
            ChangeStoredRoute(route);
}

std::set<std::string> AddressTexts(const Adapter& adapter)
{
    std::set<std::string> texts;
    for (const Family family : FAMILIES)
        for (const Address& address : *adapter.Of(family).addresses)
            texts.insert(IpPrefix{address.address, *address.prefixLength}.ToText());
    return texts;
}

std::set<std::string> RouteTexts(const Adapter& adapter)
{
    std::set<std::string> texts;
    for (const Route& route : *adapter.routes)
        if (route.store != RouteStore::PERSISTENT && route.protocol == RouteProtocol::MANAGEMENT)
            texts.insert(route.destination.ToText() +
                         (route.nextHop.IsUnspecified() ? "" : " via " + route.nextHop.ToText()) + " metric " +
                         std::to_string(std::min(*route.metric, 9u))); // greater ones are read wrongly here
    return texts;
}

std::vector<std::string> Missing(const std::set<std::string>& from, const std::set<std::string>& in)
{
    std::vector<std::string> texts;
    std::ranges::set_difference(from, in, std::back_inserter(texts));
    return texts;
}

/// The kernel drops routes with their addresses by itself, so removing one may fail. Connections it keeps; Windows
/// aborts those of an address that goes.
std::string KernelCommands(const Adapter& before, const Adapter& after, const std::string& link)
{
    const std::string dev = " dev " + link;
    std::string commands = "true";
    for (const std::string& route : Missing(RouteTexts(before), RouteTexts(after)))
        commands += "; ip route del " + route + dev;
    for (const std::string& address : Missing(AddressTexts(before), AddressTexts(after)))
        commands += "; ip addr del " + address + dev + "; ss -K src " + address.substr(0, address.find('/'));
    for (const std::string& address : Missing(AddressTexts(after), AddressTexts(before)))
        commands += "; ip addr add " + address + (address.find(':') != std::string::npos ? " nodad" : "") + dev;
    for (const std::string& route : RouteTexts(after))
        commands += "; ip route append " + route + dev + " 2>/dev/null";
    if (before.ipv4.mtu != after.ipv4.mtu)
        commands += "; ip link set mtu " + std::to_string(*after.ipv4.mtu) + dev;
    return commands + "; true";
}

/// What the kernel does not know.
void WriteRegistry(const Adapter& before, const Adapter& after)
{
    const std::wstring guid = FromUtf8(after.guid->ToText());
    for (const Family family : FAMILIES)
    {
        const std::wstring key = (family == Family::IPV4 ? IPV4_INTERFACES : IPV6_INTERFACES) + guid;
        const ConfiguredIp& configured = after.Of(family).configured;
        if (before.Of(family).configured.dnsServers != configured.dnsServers)
            WriteServers(key, configured);
        if (before.Of(family).configured.metric != configured.metric)
            WriteMetric(key, configured);
    }
    if (before.ipv4.configured != after.ipv4.configured)
        WriteIpv4(IPV4_INTERFACES + guid, after.ipv4.configured);
    if (after.ipv4.lease && after.ipv4.lease != before.ipv4.lease)
        WriteLease(IPV4_INTERFACES + guid, *after.ipv4.lease);
    WriteStoredRoutes(before, after);
}

void WriteBack(const Machine& before, const Machine& after)
{
    std::string commands = "true";
    std::string servers;
    for (std::size_t i = 0; i < before.adapters.size(); ++i)
    {
        const Adapter& adapter = after.adapters[i];
        if (before.adapters[i] != adapter)
        {
            WriteRegistry(before.adapters[i], adapter);
            commands += "; " + KernelCommands(before.adapters[i], adapter, *adapter.friendlyName);
        }
        for (const Family family : adapter.type == AdapterType::LOOPBACK ? std::vector<Family>() : ALL)
            for (const IpAddress& server : *adapter.Of(family).dnsServers)
                servers += "echo nameserver " + server.ToText() + "; ";
    }
    std::string output;
    RunUnix(commands + "; (" + servers + "true) >/etc/resolv.conf", output,
            std::string("Z:") + std::getenv("ZELK_UNIX_FOLDER"));
}

/// What this system tells wrongly: every address claims to come from DHCP, no adapter is a client of it, and servers
/// are those of all links together.
void Repair(SimulatedWindows& windows)
{
    for (Adapter& adapter : windows.machine.adapters)
    {
        for (Address& address : *adapter.ipv6.addresses)
            address.origin = AddressOrigin::MANUAL;
        if (adapter.ipv4.configured.dhcp == true && !adapter.ipv4.addresses->empty())
            adapter.ipv4.lease = LeaseFor(adapter);
    }
    if (const char* const generation = std::getenv("ZELK_GENERATION"))
    {
        windows.machine.environment.majorVersion = static_cast<std::uint32_t>(std::atoi(generation));
        windows.machine.environment.backEnd = *generation == '5' ? BackEnd::PRE_VISTA : BackEnd::VISTA;
    }
    windows.Settle();
}

bool IsMeant(const char* variable, const std::string& line)
{
    const char* const pattern = std::getenv(variable);
    return pattern != nullptr && std::regex_search(line, std::regex(pattern));
}

} // namespace

int main(int argc, char** argv)
{
    if (std::string_view(argv[0]).find("ipconfig") != std::string_view::npos)
    {
        if (argc > 1 && IsMeant("ZELK_HANG", argv[1]))
            ::Sleep(INFINITE);
        return 0;
    }
    const bool isRoute = std::string_view(argv[0]).find("route") != std::string_view::npos;
    Step step;
    step.action = Command{isRoute ? Program::ROUTE : Program::NETSH, {argv + 1, argv + argc}};
    const std::string line = CommandText(step.action);
    if (IsMeant("ZELK_IDLE", line))
        return 0;
    constexpr DWORD SLOW_MS = 4000;
    if (IsMeant("ZELK_SLOW", line))
        ::Sleep(SLOW_MS);
    SimulatedWindows windows;
    windows.machine = ReadMachine();
    Repair(windows);
    const Machine before = windows.machine;
    windows.dhcpServer = !IsMeant("ZELK_NO_LEASE", line);
    if (IsMeant("ZELK_REFUSED", line) || !windows.Perform(step))
    {
        std::puts("The parameter is incorrect.");
        return 1;
    }
    Step other;
    other.action =
        Command{Program::NETSH,
                {"interface", "ipv4", "set", "dnsservers", "Connection lan0", "static", "203.0.113.99", "validate=no"}};
    if (IsMeant("ZELK_OTHER", line) && !windows.Perform(other))
        return 3;
    WriteBack(before, windows.machine);
    if (IsMeant("ZELK_KILLED", line))
        ::TerminateProcess(::GetCurrentProcess(), STATUS_CONTROL_C_EXIT);
    if (IsMeant("ZELK_HANG", line))
        ::Sleep(INFINITE);
    while (IsMeant("ZELK_TALKS", line))
        std::puts("There is more to say.");
    if (line.find("dnsserver") != std::string::npos && line.find("validate=no") == std::string::npos)
        std::puts("The configured DNS server is incorrect or does not exist.");
    return 0;
}
