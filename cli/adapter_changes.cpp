#include "adapter_changes.h"

#include <string>

#include <zelk_nm/tolva.h>

#include "adapter.h"
#include "command.h"
#include "library_call.h"
#include "text.h"

namespace zelkctl
{
namespace
{

void Enable(const Adapter& adapter)
{
    Change("EnableAdapter", {"Starting the device", "Adapter " + Quoted(adapter) + " is enabled."},
           [&] { return TOLVA::EnableAdapter(adapter.info); });
}

void Disable(const Adapter& adapter)
{
    Change("DisableAdapter", {"Stopping the device", "Adapter " + Quoted(adapter) + " is disabled."},
           [&] { return TOLVA::DisableAdapter(adapter.info); });
}

/// The system may have no sheet to show; the library does not call that a failure.
void ShowOptions(const Adapter& adapter)
{
    const TraceReader trace;
    Call("ChangeAdapterOptions", [&] { return TOLVA::ChangeAdapterOptions(adapter.info); });
    if (trace.Problems().empty())
        Output::Note("Done with the options of adapter " + Quoted(adapter) + '.');
    else
        Output::Note("No options of adapter " + Quoted(adapter) + " were shown: " + Explanation(trace));
}

TOLVA::HARDWARE_ADDRESS ParseHardwareAddress(const std::string& sText)
{
    const TraceReader trace;
    const TOLVA::HARDWARE_ADDRESS address(FromUtf8(sText));
    if (address.size() == 0)
        throw CLI::ValidationError("MAC", Quoted(sText) + " is no hardware address: " + Explanation(trace));
    return address;
}

void SetMac(const std::string& sAdapter, const std::string& sMac)
{
    const TOLVA::HARDWARE_ADDRESS address = ParseHardwareAddress(sMac);
    const Adapter adapter = FindAdapter(sAdapter);
    const std::string sDone =
        "Adapter " + Quoted(adapter) + " has the hardware address " + ToUtf8(velmor::string(address)) + '.';
    Change("SetHardwareAddress", {"Restarting the device", sDone},
           [&] { return TOLVA::SetHardwareAddress(adapter.info, address); });
}

void AddSetMac(CLI::App& noun)
{
    CLI::App& verb = AddVerb(noun, "set-mac", "Give an adapter another hardware address and restart it",
                             "adapter set-mac lan0 02-00-00-00-00-01");
    const CLI::Option& adapter = AddAdapterArgument(verb);
    const CLI::Option& mac = AddArgument(verb, "MAC", "The hardware address", "XX-XX-XX-XX-XX-XX");
    verb.callback([&] { SetMac(adapter.as<std::string>(), mac.as<std::string>()); });
}

} // namespace

void AddAdapterChanges(CLI::App& noun)
{
    RunForAdapter(AddVerb(noun, "enable", "Start an adapter's device", "adapter enable lan0"), Enable);
    RunForAdapter(AddVerb(noun, "disable", "Stop an adapter's device", "adapter disable lan0"), Disable);
    AddSetMac(noun);
    RunForAdapter(AddVerb(noun, "options", "Open the system's property sheet of an adapter", "adapter options lan0"),
                  ShowOptions);
}

} // namespace zelkctl
