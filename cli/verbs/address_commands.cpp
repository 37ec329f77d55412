#include "verbs/address_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include <state/desired/standing.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "parser/ip_argument.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

using Prefixes = std::vector<zelk::IpPrefix>;

/// What a command line wants an adapter to have.
struct WantedAddresses
{
    Prefixes addresses;
    std::vector<zelk::IpAddress> gateways;
    std::vector<zelk::IpAddress> dnsServers;
};

/// Only what was given: the rest stays.
zelk::DesiredAdapter DesiredOf(const WantedAddresses& wanted)
{
    zelk::DesiredAdapter desired;
    const auto ListOf = [](auto& list) -> auto&
    {
        return list ? *list : list.emplace();
    };
    for (const zelk::IpPrefix& address : wanted.addresses)
        ListOf(desired.Of(address.address.GetFamily()).addresses).push_back(address);
    for (const zelk::IpAddress& gateway : wanted.gateways)
        ListOf(desired.Of(gateway.GetFamily()).gateways).push_back({gateway, std::nullopt});
    SetDnsServers(wanted.dnsServers, desired);
    return desired;
}

void AddSet(Command noun)
{
    Command verb = noun.AddVerb({"set", "Replace the addresses of one adapter by static ones",
                                 "address set lan0 192.168.1.10/24 --gateway 192.168.1.1 --yes"});
    const auto adapter = AddAdapterIn(verb);
    const auto addresses = verb.AddArguments({"ADDRESS", "All static addresses that it is to have", "ADDRESS/PREFIX"});
    const auto gateways = verb.AddOptions({"--gateway", "Its default gateways", "ADDRESS"});
    const auto servers = verb.AddOptions({"--dns", "Its DNS servers, in order of preference", "ADDRESS"});
    verb.AddRemark("Addresses of a family of which none is given remain, as do link-local addresses and those that a "
                   "router gave. Without --gateway and --dns, gateways that are still within reach remain, and so do "
                   "static DNS servers.");
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const WantedAddresses wanted{ParseNetworks("ADDRESS", addresses()), ParseAddresses("--gateway", gateways()),
                                     ParseAddresses("--dns", servers())};
        const zelk::Adapter& found = adapter(machine);
        StateChange change =
            ChangeOf(found, DesiredOf(wanted), "Adapter " + Quoted(found) + " has the addresses given.");
        change.bCanDisconnect = true;
        return change;
    });
}

/// The addresses that it is set to have, to which one can be added.
Prefixes StaticAddresses(const zelk::Adapter& adapter, zelk::Family family)
{
    if (family == zelk::Family::IPV4 && adapter.ipv4.configured.dhcp == true)
        throw Failure({.code = EXIT_NOT_POSSIBLE,
                       .sReason = "the adapter gets its IPv4 address by DHCP; nothing was changed",
                       .sAdapter = zelk::NameOf(adapter),
                       .sHint = "\"zelkctl address set\" replaces DHCP by static addresses."});
    const auto configured = zelk::ConfiguredAddresses(adapter, family);
    if (!configured)
        throw Failure({.code = EXIT_NOT_POSSIBLE,
                       .sReason = "the configured addresses of the adapter are not known; nothing was changed",
                       .sAdapter = zelk::NameOf(adapter),
                       .sHint = "\"zelkctl adapter show\" says why; \"zelkctl address set\" sets all addresses."});
    return *configured;
}

void AddAdd(Command noun)
{
    Command verb =
        noun.AddVerb({"add", "Add static addresses to one adapter", "address add lan0 192.168.1.11/24 --check"});
    const auto adapter = AddAdapterIn(verb);
    const auto addresses = verb.AddArguments({"ADDRESS", "The addresses to add", "ADDRESS/PREFIX"});
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const Prefixes added = ParseNetworks("ADDRESS", addresses());
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        for (const zelk::IpPrefix& address : added)
        {
            auto& list = desired.Of(address.address.GetFamily()).addresses;
            if (!list)
                list = StaticAddresses(found, address.address.GetFamily());
            std::erase_if(*list, [&](const zelk::IpPrefix& one) { return one.address == address.address; });
            list->push_back(address);
        }
        return ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " has the addresses given as well.");
    });
}

bool HasAddress(const zelk::Adapter& adapter, const zelk::IpAddress& address)
{
    const auto Has = [&](const Prefixes& list) {
        return std::ranges::find(list, address, &zelk::IpPrefix::address) != list.end();
    };
    return Has(zelk::AddressesInUse(adapter, address.GetFamily())) ||
           Has(zelk::ConfiguredAddresses(adapter, address.GetFamily()).value_or(Prefixes()));
}

void AddRemove(Command noun)
{
    Command verb = noun.AddVerb(
        {"remove", "Remove static addresses from one adapter", "address remove lan0 192.168.1.11 --check"});
    const auto adapter = AddAdapterIn(verb);
    const auto addresses = verb.AddArguments({"ADDRESS", "The addresses to remove", "ADDRESS"});
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const auto removed = ParseAddresses("ADDRESS", addresses());
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        for (const zelk::IpAddress& address : removed)
        {
            if (!HasAddress(found, address))
                continue;
            auto& list = desired.Of(address.GetFamily()).addresses;
            if (!list)
                list = StaticAddresses(found, address.GetFamily());
            std::erase_if(*list, [&](const zelk::IpPrefix& one) { return one.address == address; });
        }
        StateChange change =
            ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " no longer has the addresses given.");
        change.bCanDisconnect = true;
        return change;
    });
}

} // namespace

void AddAddressCommands(Command tool)
{
    Command noun = tool.AddNoun({"address", "IP addresses of an adapter", "address list lan0 --json"});
    AddAdapterListVerb(noun, {{"list", "Show the unicast addresses of one adapter", "address list lan0 --get address"},
                              {"ipv4.addresses", "ipv6.addresses"},
                              ShownFields<zelk::Address>(),
                              "address",
                              "The adapter has no addresses."});
    AddSet(noun);
    AddAdd(noun);
    AddRemove(noun);
}

} // namespace zelkctl
