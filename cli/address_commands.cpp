#include "address_commands.h"

#include <vector>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "address_record.h"
#include "command.h"
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

} // namespace

void AddAddressCommands(CLI::App& app, Output& output)
{
    CLI::App& noun = AddNoun(app, "address", "IP addresses of an adapter", "address list lan0 --json");
    AddList(noun, output);
}

} // namespace zelkctl
