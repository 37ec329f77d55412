#include "verbs/gateway_commands.h"

#include <string>
#include <vector>

#include "parser/ip_argument.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// The addresses of the gateways in use, in whatever order; those of the other family stay.
Aspect GatewayInUse(const zelk::Adapter& adapter, const zelk::IpAddress& gateway)
{
    const bool bIpv4 = gateway.IsIpv4();
    return ItemBecomes(adapter, bIpv4 ? "ipv4.gateways.address" : "ipv6.gateways.address",
                       Json::array({gateway.ToText()}));
}

Change SetGateway(const zelk::Adapter& adapter, const zelk::IpAddress& gateway)
{
    return {.sOperation = "SetDefaultGateway",
            .adapter = adapter,
            .sDoing = "Setting the default gateway",
            .sDone = "Adapter " + Quoted(adapter) + " has the default gateway " + gateway.ToText() + '.',
            .aspects = {GatewayInUse(adapter, gateway)},
            .operation = [info = NicInfoOf(adapter),
                          wanted = ToVelmor(gateway)] { return TOLVA::SetDefaultGateway(info, wanted); },
            .reach = Reach::SESSION,
            .bNeedsIpv6 = !gateway.IsIpv4()};
}

void AddSet(Command noun)
{
    Command verb =
        noun.AddVerb({"set", "Set a static default gateway of one adapter", "gateway set lan0 192.168.1.1 --yes"});
    verb.AddRemark("It replaces all default routes of its family.");
    const auto adapter = AddAdapterArgument(verb);
    const auto gateway = verb.AddArgument({"GATEWAY", "Address of the gateway", "ADDRESS"});
    MakeChangeVerb(verb, [adapter, gateway] {
        const auto wanted = ParseAddresses("GATEWAY", {gateway()}).front();
        return SetGateway(adapter(), wanted);
    });
}

Change ReturnToAutomatic(const zelk::Adapter& adapter, TOLVA::FAMILY_TYPE enFamily)
{
    // The library empties the list of IPv4 for IPv6 alone too.
    const auto enEmptied = enFamily == TOLVA::FAMILY_IPV4 ? enFamily : TOLVA::FAMILY_BOTH;
    std::vector<Aspect> aspects = {ItemBecomes(adapter, "ipv4.configured.gateways", Json::array())};
    return {.sOperation = "ReturnGatewayToDhcp",
            .adapter = adapter,
            .sDoing = "Removing the static gateways",
            .sDone = "Adapter " + Quoted(adapter) + " has no static gateways (" + FamilyText(enEmptied) +
                     "). Its routes remain.",
            .aspects = std::move(aspects),
            .operation = [=, info = NicInfoOf(adapter)] { return TOLVA::ReturnGatewayToDhcp(info, enFamily); }};
}

void AddReturn(Command noun)
{
    Command verb = noun.AddVerb({"return", "Remove the static gateways of one adapter", "gateway return lan0 --ipv4"});
    verb.AddRemark("It empties the stored lists of static gateways; routes remain. --ipv6 also empties the list of "
                   "IPv4.");
    MakeChangeVerb(verb, [adapter = AddAdapterArgument(verb), family = AddFamilyFlags(verb)] {
        return ReturnToAutomatic(adapter(), family());
    });
}

} // namespace

void AddGatewayCommands(Command tool)
{
    Command noun = tool.AddNoun({"gateway", "Default gateways of an adapter", "gateway list lan0 --json"});
    AddAdapterListVerb(noun, {{"list", "Show the default gateways that one adapter uses", "gateway list lan0"},
                              {"ipv4.gateways", "ipv6.gateways"},
                              ShownFields<zelk::Gateway>(),
                              "gateway",
                              "The adapter has no default gateway."});
    AddSet(noun);
    AddAdapterPartVerb(
        noun, {"status", "Show the default gateways in use and the static ones of one adapter", "gateway status lan0"},
        {"ipv4.gateways", "ipv4.configured.gateways", "ipv6.gateways", "ipv6.configured.gateways"});
    AddReturn(noun);
}

} // namespace zelkctl
