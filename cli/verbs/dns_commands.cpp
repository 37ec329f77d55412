#include "verbs/dns_commands.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "parser/ip_argument.h"
#include "records/answer_schema.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// Only the first server is used at once.
void AddServers(const zelk::Adapter& adapter, const std::string& sFamily, zelk::Family family,
                const std::vector<zelk::IpAddress>& servers, std::vector<Aspect>& aspects)
{
    Json wanted = Json::array();
    for (const zelk::IpAddress& server : servers)
        if (server.GetFamily() == family)
            wanted.push_back(server.ToText());
    if (wanted.empty())
        return;
    for (const char* pszKey : {".configured.dnsServers", ".dnsServers"})
    {
        Aspect aspect = ItemBecomes(adapter, sFamily + pszKey, wanted);
        aspect.isReached = [first = wanted.front()](const Json& now) {
            return std::ranges::find(now, first) != now.end();
        };
        aspects.push_back(std::move(aspect));
    }
}

Change SetServers(const zelk::Adapter& adapter, const std::vector<zelk::IpAddress>& servers)
{
    std::vector<velmor::ip_address> wanted;
    std::ranges::transform(servers, std::back_inserter(wanted), ToVelmor);
    Change change{.sOperation = "SetDnsServerList",
                  .adapter = adapter,
                  .sDoing = "Setting the DNS servers",
                  .sDone = "Adapter " + Quoted(adapter) + " has static DNS servers.",
                  .operation = [wanted, info = NicInfoOf(adapter)] { return TOLVA::SetDnsServerList(info, wanted); },
                  .bNeedsIpv6 = !std::ranges::all_of(servers, &zelk::IpAddress::IsIpv4)};
    AddServers(adapter, "ipv4", zelk::Family::IPV4, servers, change.aspects);
    AddServers(adapter, "ipv6", zelk::Family::IPV6, servers, change.aspects);
    return change;
}

void AddSet(Command noun)
{
    Command verb =
        noun.AddVerb({"set", "Set static DNS servers of one adapter", "dns set lan0 192.168.1.1 2001:db8::53"});
    verb.AddRemark(
        "They replace those of both families. The first one is used at once, the others when the adapter is\n"
        "configured again.");
    const auto adapter = AddAdapterArgument(verb);
    const auto servers = verb.AddArguments({"SERVER", "The servers, in order of preference", "ADDRESS"});
    MakeChangeVerb(verb, [adapter, servers] {
        const auto wanted = ParseAddresses("SERVER", servers());
        return SetServers(adapter(), wanted);
    });
}

Change ReturnToAutomatic(const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    Change change{.sOperation = "ReturnDnsToDhcp",
                  .adapter = adapter,
                  .sDoing = "Removing the static DNS servers",
                  .sDone = "Adapter " + Quoted(adapter) + " has no static DNS servers (" + FamilyText(enFamily) + ").",
                  .operation = [=, info = NicInfoOf(adapter)] { return TOLVA::ReturnDnsToDhcp(info, enFamily); }};
    if (HasIpv4(enFamily))
        change.aspects.push_back(ItemBecomes(adapter, "ipv4.configured.dnsServers", "automatic"));
    if (HasIpv6(enFamily))
        change.aspects.push_back(ItemBecomes(adapter, "ipv6.configured.dnsServers", "automatic"));
    return change;
}

void AddReturn(Command noun)
{
    Command verb = noun.AddVerb({"return", "Remove the static DNS servers of one adapter", "dns return lan0 --ipv4"});
    verb.AddRemark("Nothing else changes until the adapter is configured again.");
    MakeChangeVerb(verb, [adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
        return ReturnToAutomatic(adapter(), family());
    });
}

} // namespace

void AddDnsCommands(Command tool)
{
    Command noun = tool.AddNoun({"dns", "DNS servers of an adapter", "dns list lan0 --json"});
    AddAdapterListVerb(noun,
                       {{"list", "Show the DNS servers that one adapter uses, in order of preference", "dns list lan0"},
                        {"ipv4.dnsServers", "ipv6.dnsServers"},
                        {{"address", "Address"}},
                        DNS_SERVER_RECORD,
                        "The adapter has no DNS servers."});
    AddSet(noun);
    AddAdapterPartVerb(
        noun, {"status", "Show the DNS servers in use and the static ones of one adapter", "dns status lan0"},
        {"ipv4.dnsServers", "ipv4.configured.dnsServers", "ipv6.dnsServers", "ipv6.configured.dnsServers"});
    AddReturn(noun);
}

} // namespace zelkctl
