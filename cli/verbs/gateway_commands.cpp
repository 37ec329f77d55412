#include "verbs/gateway_commands.h"

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

Json ListGateways(const Adapter& adapter)
{
    std::vector<velmor::ip_address> gateways;
    Call("GetDefaultGatewayList", &adapter,
         [&] { return TOLVA::GetDefaultGatewayList(adapter.info, TOLVA::FAMILY_BOTH, gateways); });
    return PlainAddresses(gateways);
}

/// Those of the other family stay, in whatever order.
Aspect GatewayInEffect(const TOLVA::NIC_INFO& info, const velmor::ip_address& gateway)
{
    return {.field =
                gateway.is_ipv4() ? Field{"ipv4Gateways", "IPv4 gateways"} : Field{"ipv6Gateways", "IPv6 gateways"},
            .read =
                [=] {
                    std::vector<velmor::ip_address> gateways;
                    if (!TOLVA::GetDefaultGatewayList(info, TOLVA::FAMILY_BOTH, gateways))
                        return Json();
                    std::erase_if(gateways, [=](const auto& other) { return other.family() != gateway.family(); });
                    return RecordsOf(gateways, AddressOrNull);
                },
            .wanted = Json::array({AddressOrNull(gateway)})};
}

Change SetGateway(const Adapter& adapter, const velmor::ip_address& gateway)
{
    return {.sOperation = "SetDefaultGateway",
            .adapter = adapter,
            .sDoing = "Setting the gateway",
            .sDone = "Adapter " + Quoted(adapter) + " has the default gateway " + TextOf(AddressOrNull(gateway)) + '.',
            .aspects = {GatewayInEffect(adapter.info, gateway)},
            .operation = [=] { return TOLVA::SetDefaultGateway(adapter.info, gateway); },
            .reach = Reach::SESSION,
            .bNeedsIpv6 = gateway.is_ipv6()};
}

void AddSet(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"set", "Give one adapter a static default gateway", "gateway set lan0 192.168.1.1 --yes"});
    AddRemark(verb, "It takes the place of all default routes of its family.");
    auto adapter = AddAdapterArgument(verb);
    const auto gateway = AddArgument(verb, "GATEWAY", "The gateway", "ADDRESS");
    RunChange(verb, output, [adapter, gateway] {
        const auto wanted = ParseAddresses("GATEWAY", {gateway()}).front();
        return SetGateway(adapter(), wanted);
    });
}

Change ReturnToAutomatic(const Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    // The library empties the list of IPv4 for IPv6 alone too.
    const auto enEmptied = enFamily == TOLVA::FAMILY_IPV4 ? enFamily : TOLVA::FAMILY_BOTH;
    return {.sOperation = "ReturnGatewayToDhcp",
            .adapter = adapter,
            .sDoing = "Forgetting the gateways",
            .sDone = "Adapter " + Quoted(adapter) + " keeps no static gateway (" + FamilyText(enEmptied) +
                     "). Its routes stay.",
            .aspects = Become(true, AUTOMATIC_GATEWAY, adapter.info, enEmptied),
            .operation = [=] { return TOLVA::ReturnGatewayToDhcp(adapter.info, enFamily); }};
}

void AddReturn(CLI::App& noun, Output& output)
{
    CLI::App& verb =
        AddVerb(noun, {"return", "Forget the static gateways of one adapter", "gateway return lan0 --ipv4"});
    AddRemark(verb, "It empties the lists of static gateways; routes stay. IPv6 alone also empties the list of IPv4.");
    RunChange(verb, output, [adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
        return ReturnToAutomatic(adapter(), family());
    });
}

} // namespace

void AddGatewayCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"gateway", "Default gateways of an adapter", "gateway list lan0 --json"});
    AddListVerb(noun, output, {"list", "Show the gateways of the default routes of one adapter", "gateway list lan0"},
                PLAIN_ADDRESS_FIELDS, "The adapter has no default gateway.", ListGateways);
    AddSet(noun, output);
    CLI::App& status = AddRecordVerb(
        noun, output, {"status", "Show for which families one adapter keeps no static gateway", "gateway status lan0"},
        FieldsOf(AUTOMATIC_GATEWAY), [](const Adapter& adapter) { return RecordOf(AUTOMATIC_GATEWAY, adapter.info); });
    AddRemark(status, "An IPv6 gateway that \"gateway set\" has set counts as automatic.");
    AddReturn(noun, output);
}

} // namespace zelkctl
