#include "gateway_commands.h"

#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "command.h"
#include "gateway_record.h"
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
        AddVerb(noun, "list", "Show the gateways of the default routes of one adapter", "gateway list lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb, [&output](const Adapter& adapter) {
        std::vector<velmor::ip_address> gateways;
        Call("GetDefaultGatewayList",
             [&] { return TOLVA::GetDefaultGatewayList(adapter.info, TOLVA::FAMILY_BOTH, gateways); });
        output.List(PLAIN_ADDRESS_FIELDS, PlainAddresses(gateways), "The adapter has no default gateway.");
    });
}

void SetGateway(const std::string& sAdapter, const std::string& sGateway)
{
    const velmor::ip_address gateway = ParseAddress("GATEWAY", sGateway);
    const Adapter adapter = FindAdapter(sAdapter);
    Change("SetDefaultGateway",
           {"Setting the gateway", "Adapter " + Quoted(adapter) + " has the default gateway " + sGateway + '.'},
           [&] { return TOLVA::SetDefaultGateway(adapter.info, gateway); });
}

void AddSet(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "set", "Give one adapter a static default gateway", "gateway set lan0 192.168.1.1");
    AddRemark(verb, "It takes the place of all default routes of its family.");
    const CLI::Option& adapter = AddAdapterArgument(verb);
    const CLI::Option& gateway = AddArgument(verb, "GATEWAY", "The gateway", "ADDRESS");
    verb.callback([&] { SetGateway(adapter.as<std::string>(), gateway.as<std::string>()); });
}

void AddStatus(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, "status", "Show for which families one adapter keeps no static gateway", "gateway status lan0");
    AddRemark(verb, "An IPv6 gateway that \"gateway set\" has set counts as automatic.");
    AddJsonFlag(verb, output);
    RunForAdapter(
        verb, [&output](const Adapter& adapter) { output.Record(GatewayStateFields(), GatewayStateOf(adapter.info)); });
}

void AddReturn(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "return", "Forget the static gateways of one adapter", "gateway return lan0 --ipv4");
    AddRemark(verb, "It empties the lists of static gateways; routes stay. IPv6 alone also empties the list of IPv4.");
    RunForFamilies(verb, [](const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily) {
        Call("ReturnGatewayToDhcp", [&] { return TOLVA::ReturnGatewayToDhcp(adapter.info, enFamily); });
        Output::Note("Adapter " + Quoted(adapter) + " keeps no static gateway (" +
                     FamilyText(enFamily == TOLVA::FAMILY_IPV4 ? enFamily : TOLVA::FAMILY_BOTH) +
                     "). Its routes stay.");
    });
}

} // namespace

void AddGatewayCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "gateway", "Default gateways of an adapter", "gateway list lan0 --json");
    AddList(noun, output);
    AddSet(noun);
    AddStatus(noun, output);
    AddReturn(noun);
}

} // namespace zelkctl
