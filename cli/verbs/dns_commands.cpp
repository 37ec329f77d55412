#include "verbs/dns_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "adapters/library_call.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "parser/ip_argument.h"
#include "records/automatic_setting.h"
#include "records/family.h"

namespace zelkctl
{
namespace
{

Json ListServers(const Adapter& adapter)
{
    std::vector<velmor::ip_address> servers;
    Call("GetDnsServerList", &adapter, [&] { return TOLVA::GetDnsServerList(adapter.info, servers); });
    return PlainAddresses(servers);
}

TOLVA::FAMILY_TYPE FamilyOf(const std::vector<velmor::ip_address>& addresses)
{
    const auto IsIpv4 = [](const velmor::ip_address& address) { return address.is_ipv4(); };
    if (std::ranges::all_of(addresses, IsIpv4))
        return TOLVA::FAMILY_IPV4;
    return std::ranges::none_of(addresses, IsIpv4) ? TOLVA::FAMILY_IPV6 : TOLVA::FAMILY_BOTH;
}

/// Only the first server is in effect at once.
Aspect ServersInEffect(const TOLVA::NIC_INFO& info, const std::vector<velmor::ip_address>& servers)
{
    const Json wanted = RecordsOf(servers, AddressOrNull);
    return {
        .field = {"dnsServers", "DNS servers"},
        .read = [info] { return DnsServersOf(info); },
        .wanted = wanted,
        .isReached = [first = wanted.front()](const Json& now) { return std::ranges::find(now, first) != now.end(); }};
}

Change SetServers(const Adapter& adapter, const std::vector<velmor::ip_address>& servers)
{
    auto aspects = Become(false, AUTOMATIC_DNS, adapter.info, FamilyOf(servers));
    aspects.push_back(ServersInEffect(adapter.info, servers));
    return {.sOperation = "SetDnsServerList",
            .adapter = adapter,
            .sDoing = "Setting the DNS servers",
            .sDone = "Adapter " + Quoted(adapter) + " has static DNS servers.",
            .aspects = std::move(aspects),
            .operation = [=] { return TOLVA::SetDnsServerList(adapter.info, servers); },
            .bNeedsIpv6 = HasIpv6(FamilyOf(servers))};
}

void AddSet(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"set", "Give one adapter static DNS servers", "dns set lan0 192.168.1.1 2001:db8::53"});
    AddRemark(verb, "They take the place of those of both families. The first is used at once, the others when the "
                    "adapter is configured anew.");
    auto adapter = AddAdapterArgument(verb);
    const auto servers = AddArguments(verb, "SERVER", "The servers in their order of preference", "ADDRESS");
    RunChange(verb, output, [adapter, servers] {
        const auto wanted = ParseAddresses("SERVER", servers());
        return SetServers(adapter(), wanted);
    });
}

Change ReturnToAutomatic(const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    return {.sOperation = "ReturnDnsToDhcp",
            .adapter = adapter,
            .sDoing = "Forgetting the DNS servers",
            .sDone = "Adapter " + Quoted(adapter) + " keeps no static DNS servers (" + FamilyText(enFamily) + ").",
            .aspects = Become(true, AUTOMATIC_DNS, adapter.info, enFamily),
            .operation = [=] { return TOLVA::ReturnDnsToDhcp(adapter.info, enFamily); }};
}

void AddReturn(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"return", "Forget the static DNS servers of one adapter", "dns return lan0 --ipv4"});
    AddRemark(verb, "Nothing else changes until the adapter is configured anew.");
    RunChange(verb, output, [adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
        return ReturnToAutomatic(adapter(), family());
    });
}

} // namespace

void AddDnsCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"dns", "DNS servers of an adapter", "dns list lan0 --json"});
    AddListVerb(noun, output,
                {"list", "Show the DNS servers of one adapter in their order of preference", "dns list lan0"},
                PLAIN_ADDRESS_FIELDS, "The adapter has no DNS server.", ListServers);
    AddSet(noun, output);
    AddRecordVerb(
        noun, output, {"status", "Show for which families one adapter keeps no static DNS servers", "dns status lan0"},
        FieldsOf(AUTOMATIC_DNS), [](const Adapter& adapter) { return RecordOf(AUTOMATIC_DNS, adapter.info); });
    AddReturn(noun, output);
}

} // namespace zelkctl
