#include "verbs/address_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "adapters/library_call.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "parser/ip_argument.h"
#include "records/address_record.h"

namespace zelkctl
{
namespace
{

Json ListAddresses(const Adapter& adapter)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
    Call("GetAdaptersIpAddrs", &adapter, [&] { return TOLVA::GetAdaptersIpAddrs(adapter.info, addresses); });
    return RecordsOf(addresses, RecordOf);
}

TOLVA::ASSOC_IP_ADDR ToAssocIpAddr(const Network& network)
{
    TOLVA::ASSOC_IP_ADDR address;
    address.IpAddress = network.address;
    address.SubnetPrefix = network.prefixLength;
    return address;
}

std::vector<TOLVA::ASSOC_IP_ADDR> ParseNewAddresses(const std::vector<std::string>& texts)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
    for (const Network& network : ParseNetworks("ADDRESS", texts))
        addresses.push_back(ToAssocIpAddr(network));
    if (std::ranges::count_if(addresses, IsIpv4) > 1)
        throw WrongUse("ADDRESS", "only one IPv4 address can be set: from Windows Vista on each replaces "
                                  "the one before it, so that only the last would stay");
    return addresses;
}

Change SetAddresses(const Adapter& adapter, const std::vector<TOLVA::ASSOC_IP_ADDR>& addresses)
{
    Change change{.sOperation = "SetAdaptersIpAddrs",
                  .adapter = adapter,
                  .sDoing = "Setting the addresses",
                  .sDone = "Adapter " + Quoted(adapter) + " has its new addresses.",
                  .operation = [=] { return TOLVA::SetAdaptersIpAddrs(adapter.info, addresses); },
                  .reach = Reach::SESSION};
    if (std::ranges::any_of(addresses, IsIpv4))
        change.aspects.push_back(Ipv4Addresses(adapter.info, addresses));
    change.bNeedsIpv6 = !std::ranges::all_of(addresses, IsIpv4);
    if (change.bNeedsIpv6)
        change.aspects.push_back(StaticIpv6Addresses(adapter.info, addresses));
    return change;
}

void AddSet(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, {"set", "Give one adapter static addresses in place of those it has",
                                    "address set lan0 192.168.1.10/24 2001:db8::10/64 --yes"});
    auto adapter = AddAdapterArgument(verb);
    const auto addresses = AddArguments(verb, "ADDRESS", "The addresses, at most one of them IPv4", "ADDRESS/PREFIX");
    AddRemark(verb, "Addresses of a family that is not named stay. The prefix length of an IPv6 address is not passed "
                    "on: the system chooses it.");
    RunChange(verb, output, [adapter, addresses] {
        const auto wanted = ParseNewAddresses(addresses());
        return SetAddresses(adapter(), wanted);
    });
}

} // namespace

void AddAddressCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, {"address", "IP addresses of an adapter", "address list lan0 --json"});
    AddListVerb(noun, output, {"list", "Show the unicast addresses of one adapter", "address list lan0 --get address"},
                AddressFields(), "The adapter has no addresses.", ListAddresses);
    AddSet(noun, output);
}

} // namespace zelkctl
