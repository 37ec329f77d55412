#include "verbs/address_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include "answer/failure.h"
#include "parser/ip_argument.h"
#include "verbs/address_aspects.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

bool IsIpv4(const zelk::IpPrefix& prefix)
{
    return prefix.address.IsIpv4();
}

std::vector<zelk::IpPrefix> ParseNewAddresses(const std::vector<std::string>& texts)
{
    auto addresses = ParseNetworks("ADDRESS", texts);
    if (std::ranges::count_if(addresses, IsIpv4) > 1)
        throw UsageError("ADDRESS", "only one IPv4 address can be set: from Windows Vista on each one replaces the one "
                                    "before it, so that only the last would remain");
    return addresses;
}

std::vector<TOLVA::ASSOC_IP_ADDR> ToAssocIpAddrs(const std::vector<zelk::IpPrefix>& prefixes)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
    for (const zelk::IpPrefix& prefix : prefixes)
    {
        TOLVA::ASSOC_IP_ADDR address;
        address.IpAddress = ToVelmor(prefix.address);
        address.SubnetPrefix = prefix.length;
        addresses.push_back(address);
    }
    return addresses;
}

Change SetAddresses(const zelk::Adapter& adapter, const std::vector<zelk::IpPrefix>& addresses)
{
    Change change{.sOperation = "SetAdaptersIpAddrs",
                  .adapter = adapter,
                  .sDoing = "Setting the addresses",
                  .sDone = "Adapter " + Quoted(adapter) + " has its new addresses.",
                  .operation = [info = NicInfoOf(adapter),
                                wanted = ToAssocIpAddrs(addresses)] { return TOLVA::SetAdaptersIpAddrs(info, wanted); },
                  .reach = Reach::SESSION};
    if (std::ranges::any_of(addresses, IsIpv4))
        change.aspects.push_back(Ipv4Addresses(adapter, addresses));
    change.bNeedsIpv6 = !std::ranges::all_of(addresses, IsIpv4);
    if (change.bNeedsIpv6)
        change.aspects.push_back(StaticIpv6Addresses(adapter, addresses));
    return change;
}

void AddSet(Command noun)
{
    Command verb = noun.AddVerb({"set", "Replace the addresses of one adapter by static ones",
                                 "address set lan0 192.168.1.10/24 2001:db8::10/64 --yes"});
    const auto adapter = AddAdapterArgument(verb);
    const auto addresses =
        verb.AddArguments({"ADDRESS", "The new addresses; at most one can be IPv4", "ADDRESS/PREFIX"});
    verb.AddRemark("If all addresses are of one family, those of the other family remain. The system chooses the\n"
                   "prefix length of an IPv6 address.");
    MakeChangeVerb(verb, [adapter, addresses] {
        const auto wanted = ParseNewAddresses(addresses());
        return SetAddresses(adapter(), wanted);
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
}

} // namespace zelkctl
