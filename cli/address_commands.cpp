#include "address_commands.h"

#include <algorithm>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "address_record.h"
#include "command.h"
#include "ip_argument.h"
#include "json_value.h"
#include "library_call.h"

namespace zelkctl
{
namespace
{

void ListAddresses(const Output& output, const Adapter& adapter)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
    Call("GetAdaptersIpAddrs", [&] { return TOLVA::GetAdaptersIpAddrs(adapter.info, addresses); });
    output.List(AddressFields(), RecordsOf(addresses, RecordOf), "The adapter has no addresses.");
}

void AddList(CLI::App& noun, Output& output)
{
    CLI::App& verb = AddVerb(noun, "list", "Show the unicast addresses of one adapter", "address list lan0");
    AddJsonFlag(verb, output);
    RunForAdapter(verb, [&output](const Adapter& adapter) { ListAddresses(output, adapter); });
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
    const auto IsIpv4 = [](const TOLVA::ASSOC_IP_ADDR& address) { return address.IpAddress.is_ipv4(); };
    if (std::count_if(addresses.begin(), addresses.end(), IsIpv4) > 1)
        throw CLI::ValidationError("ADDRESS", "only one IPv4 address can be set: from Windows Vista on each replaces "
                                              "the one before it, so that only the last would stay");
    return addresses;
}

void SetAddresses(const std::string& sAdapter, const std::vector<std::string>& texts)
{
    const auto addresses = ParseNewAddresses(texts);
    const Adapter adapter = FindAdapter(sAdapter);
    Change("SetAdaptersIpAddrs", {"Setting the addresses", "Adapter " + Quoted(adapter) + " was given its addresses."},
           [&] { return TOLVA::SetAdaptersIpAddrs(adapter.info, addresses); });
}

void AddSet(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "set", "Give one adapter static addresses in place of those it has",
                             "address set lan0 192.168.1.10/24 2001:db8::10/64");
    const CLI::Option& adapter = AddAdapterArgument(verb);
    const CLI::Option& addresses =
        AddArguments(verb, "ADDRESS", "The addresses, at most one of them IPv4", "ADDRESS/PREFIX");
    AddRemark(verb, "Addresses of a family that is not named stay. The prefix length of an IPv6 address is not passed "
                    "on: the system chooses it.");
    verb.callback([&] { SetAddresses(adapter.as<std::string>(), addresses.as<std::vector<std::string>>()); });
}

} // namespace

void AddAddressCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "address", "IP addresses of an adapter", "address list lan0 --json");
    AddList(noun, output);
    AddSet(noun);
}

} // namespace zelkctl
