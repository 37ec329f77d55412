#include "dns_commands.h"

#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "command.h"
#include "dns_record.h"
#include "ip_argument.h"
#include "json_value.h"
#include "library_call.h"

namespace zelkctl
{
namespace
{

void AddList(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, "list", "Show the DNS servers of one adapter in their order of preference", "dns list lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb, [&output](const Adapter& adapter) {
        std::vector<velmor::ip_address> servers;
        Call("GetDnsServerList", [&] { return TOLVA::GetDnsServerList(adapter.info, servers); });
        output.List(PLAIN_ADDRESS_FIELDS, PlainAddresses(servers), "The adapter has no DNS server.");
    });
}

void SetServers(const std::string& sAdapter, const std::vector<std::string>& texts)
{
    const auto servers = ParseAddresses("SERVER", texts);
    const Adapter adapter = FindAdapter(sAdapter);
    Change("SetDnsServerList", {"Setting the DNS servers", "Adapter " + Quoted(adapter) + " has static DNS servers."},
           [&] { return TOLVA::SetDnsServerList(adapter.info, servers); });
}

void AddSet(CLI::App& noun)
{
    CLI::App& verb =
        AddVerb(noun, "set", "Give one adapter static DNS servers", "dns set lan0 192.168.1.1 2001:db8::53");
    AddRemark(verb, "They take the place of those of both families. The first is used at once, the others when the "
                    "adapter is configured anew.");
    const CLI::Option& adapter = AddAdapterArgument(verb);
    const CLI::Option& servers = AddArguments(verb, "SERVER", "The servers in their order of preference", "ADDRESS");
    verb.callback([&] { SetServers(adapter.as<std::string>(), servers.as<std::vector<std::string>>()); });
}

void AddStatus(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, "status", "Show for which families one adapter keeps no static DNS servers", "dns status lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb,
                  [&output](const Adapter& adapter) { output.Record(DnsStateFields(), DnsStateOf(adapter.info)); });
}

void AddReturn(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "return", "Forget the static DNS servers of one adapter", "dns return lan0 --ipv4");
    AddRemark(verb, "Nothing else changes until the adapter is configured anew.");
    RunForFamilies(verb, [](const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily) {
        Call("ReturnDnsToDhcp", [&] { return TOLVA::ReturnDnsToDhcp(adapter.info, enFamily); });
        Output::Note("Adapter " + Quoted(adapter) + " keeps no static DNS servers (" + FamilyText(enFamily) + ").");
    });
}

} // namespace

void AddDnsCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "dns", "DNS servers of an adapter", "dns list lan0 --json");
    AddList(noun, output);
    AddSet(noun);
    AddStatus(noun, output);
    AddReturn(noun);
}

} // namespace zelkctl
