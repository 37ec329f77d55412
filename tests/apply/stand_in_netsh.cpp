// Stands in for the system's netsh: does what the simulated Windows does, and writes it to the kernel of the network
// namespace and to the registry as Windows keeps it. The last word of a connection's name is the link. The environment
// can have it refuse a command that holds a text, hang at it, do nothing and report success, or have no DHCP server
// answer.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>

#include <e2e/unix_command.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <state/simulated_windows.h>

using namespace zelk;

namespace
{

void SetValue(const std::wstring& key, const wchar_t* name, DWORD type, const void* data, std::size_t size)
{
    ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, type, data, static_cast<DWORD>(size));
}

void SetList(const std::wstring& key, const wchar_t* name, const std::vector<std::string>& texts)
{
    std::wstring data;
    for (const std::string& text : texts)
        data += FromUtf8(text) + L'\0';
    data += L'\0';
    SetValue(key, name, REG_MULTI_SZ, data.data(), data.size() * sizeof(wchar_t));
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
    const DWORD dhcp = *configured.dhcp ? 1 : 0;
    SetValue(key, L"EnableDHCP", REG_DWORD, &dhcp, sizeof(dhcp));
    SetList(key, L"IPAddress", addresses);
    SetList(key, L"SubnetMask", masks);
    SetList(key, L"DefaultGateway", gateways);
    SetList(key, L"DefaultGatewayMetric", metrics);
}

std::string WriteServers(const std::wstring& key, const ConfiguredIp& configured)
{
    std::string joined, lines;
    if (const auto* const servers = std::get_if<std::vector<IpAddress>>(&*configured.dnsServers))
        for (const IpAddress& server : *servers)
        {
            joined += (joined.empty() ? "" : ",") + server.ToText();
            lines += "echo nameserver " + server.ToText() + "; ";
        }
    const std::wstring text = FromUtf8(joined);
    SetValue(key, L"NameServer", REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    return lines;
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

/// The kernel drops routes with their addresses by itself, so removing one may fail.
std::string KernelCommands(const Adapter& before, const Adapter& after, const std::string& link)
{
    const std::string dev = " dev " + link;
    std::string commands = "true";
    for (const std::string& route : Missing(RouteTexts(before), RouteTexts(after)))
        commands += "; ip route del " + route + dev;
    for (const std::string& address : Missing(AddressTexts(before), AddressTexts(after)))
        commands += "; ip addr del " + address + dev;
    for (const std::string& address : Missing(AddressTexts(after), AddressTexts(before)))
        commands += "; ip addr add " + address + (address.find(':') != std::string::npos ? " nodad" : "") + dev;
    for (const std::string& route : RouteTexts(after))
        commands += "; ip route add " + route + dev + " 2>/dev/null";
    return commands + "; true";
}

void WriteBack(const Adapter& before, const Adapter& after)
{
    const std::wstring guid = FromUtf8(after.guid->ToText());
    const std::string link = after.connectionName->substr(after.connectionName->rfind(' ') + 1);
    if (before.ipv4.configured != after.ipv4.configured)
        WriteIpv4(IPV4_INTERFACES + guid, after.ipv4.configured);
    std::string commands = KernelCommands(before, after, link);
    if (before.ipv4.configured.dnsServers != after.ipv4.configured.dnsServers)
        commands += "; (" + WriteServers(IPV4_INTERFACES + guid, after.ipv4.configured) + "true) >/etc/resolv.conf";
    std::string output;
    RunUnix(commands, output, std::string("Z:") + std::getenv("ZELK_UNIX_FOLDER"));
}

/// Every address of this system claims to come from DHCP.
void Repair(Machine& machine)
{
    for (Adapter& adapter : machine.adapters)
        for (Address& address : *adapter.ipv6.addresses)
            address.origin = AddressOrigin::MANUAL;
}

bool IsMeant(const char* variable, const std::string& line)
{
    const char* const text = std::getenv(variable);
    return text != nullptr && line.find(text) != std::string::npos;
}

} // namespace

int main(int argc, char** argv)
{
    Command command{Program::NETSH, {argv + 1, argv + argc}};
    const std::string line = CommandText(command);
    if (IsMeant("ZELK_HANG", line))
        ::Sleep(INFINITE);
    if (IsMeant("ZELK_IDLE", line))
        return 0;
    SimulatedWindows windows;
    windows.machine = ReadMachine();
    Repair(windows.machine);
    const Machine before = windows.machine;
    Step step;
    step.action = command;
    if (IsMeant("ZELK_REFUSED", line) || !windows.Perform(step))
    {
        std::puts("The parameter is incorrect.");
        return 1;
    }
    for (Adapter& adapter : windows.machine.adapters)
        if (adapter.ipv4.configured.dhcp == true && IsMeant("ZELK_NO_LEASE", line))
            adapter.ipv4.addresses->clear();
    for (std::size_t i = 0; i < before.adapters.size(); ++i)
        if (before.adapters[i] != windows.machine.adapters[i])
            WriteBack(before.adapters[i], windows.machine.adapters[i]);
    return 0;
}
