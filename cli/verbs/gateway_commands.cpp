#include "verbs/gateway_commands.h"

#include <string>

#include "adapters/adapter.h"
#include "parser/ip_argument.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

void AddSet(Command noun)
{
    Command verb =
        noun.AddVerb({"set", "Set the static default gateway of one adapter", "gateway set lan0 192.168.1.1 --yes"});
    verb.AddRemark("It replaces all static default gateways of its family.");
    const auto adapter = AddAdapterIn(verb);
    const auto gateway = verb.AddArgument({"GATEWAY", "Address of the gateway", "ADDRESS"});
    const auto metric = AddMetricOption(verb);
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const auto address = ParseAddresses("GATEWAY", {gateway()}).front();
        zelk::DesiredAdapter desired;
        desired.Of(address.GetFamily()).gateways = {{address, metric()}};
        const zelk::Adapter& found = adapter(machine);
        StateChange change =
            ChangeOf(found, std::move(desired),
                     "Adapter " + Quoted(found) + " has the default gateway " + address.ToText() + '.');
        change.bCanDisconnect = true;
        return change;
    });
}

void AddReturn(Command noun)
{
    Command verb =
        noun.AddVerb({"return", "Remove the static default gateways of one adapter", "gateway return lan0 --ipv4"});
    verb.AddRemark("Gateways that DHCP or a router gave remain.");
    const auto adapter = AddAdapterIn(verb);
    const auto families = AddFamilyFlags(verb);
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        for (const zelk::Family family : families.Of(machine, found))
            desired.Of(family).gateways.emplace();
        StateChange change =
            ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " has no static default gateways.");
        change.bCanDisconnect = true;
        return change;
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
