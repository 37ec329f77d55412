#include "verbs/adapter_changes.h"

#include <string>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "adapters/installed_adapters.h"
#include "adapters/library_call.h"
#include "answer/json_value.h"
#include "parser/command.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

Aspect DeviceState(const Adapter& adapter, bool bWanted)
{
    return {.field = {"enabled", "Enabled"},
            .read =
                [adapter] {
                    const auto bStarted = IsDeviceStarted(adapter);
                    return bStarted ? Json(*bStarted) : Json();
                },
            .wanted = bWanted};
}

Change Enable(const Adapter& adapter)
{
    return {.sOperation = "EnableAdapter",
            .adapter = adapter,
            .sDoing = "Starting the device",
            .sDone = "Adapter " + Quoted(adapter) + " is enabled.",
            .aspects = {DeviceState(adapter, true)},
            .operation = [adapter] { return TOLVA::EnableAdapter(adapter.info); }};
}

Change Disable(const Adapter& adapter)
{
    return {.sOperation = "DisableAdapter",
            .adapter = adapter,
            .sDoing = "Stopping the device",
            .sDone = "Adapter " + Quoted(adapter) + " is disabled.",
            .aspects = {DeviceState(adapter, false)},
            .operation = [adapter] { return TOLVA::DisableAdapter(adapter.info); },
            .reach = Reach::SESSION};
}

TOLVA::HARDWARE_ADDRESS ParseHardwareAddress(const std::string& sText)
{
    const TraceReader trace;
    const TOLVA::HARDWARE_ADDRESS address(FromUtf8(sText));
    if (address.size() == 0)
        throw WrongUse("ADDRESS", Quoted(sText) + " is no hardware address: " + Explanation(trace));
    return address;
}

Change SetMac(const Adapter& adapter, const TOLVA::HARDWARE_ADDRESS& address)
{
    const std::string sAddress = ToUtf8(velmor::string(address));
    return {.sOperation = "SetHardwareAddress",
            .adapter = adapter,
            .sDoing = "Restarting the device",
            .sDone = "Adapter " + Quoted(adapter) + " has the hardware address " + sAddress + '.',
            .aspects = {{.field = {"hardwareAddress", "Hardware address"},
                         .read =
                             [adapter] {
                                 TOLVA::HARDWARE_ADDRESS now;
                                 return TOLVA::GetHardwareAddress(adapter.info, now) ? TextOrNull(now) : Json();
                             },
                         .wanted = sAddress}},
            .operation = [=] { return TOLVA::SetHardwareAddress(adapter.info, address); },
            .reach = Reach::SESSION};
}

/// The system may have no sheet to show; the library does not call that a failure.
void ShowOptions(const Adapter& adapter, const Output& output)
{
    const TraceReader trace;
    Call("ChangeAdapterOptions", &adapter, [&] { return TOLVA::ChangeAdapterOptions(adapter.info); });
    const std::string sPrevented = trace.Problems().empty() ? "" : Explanation(trace);
    if (sPrevented.empty())
        Output::Note("Done with the options of adapter " + Quoted(adapter) + '.');
    else
        Output::Note("No options of adapter " + Quoted(adapter) + " were shown: " + sPrevented);
    Json result;
    result["shown"] = sPrevented.empty();
    result["reason"] = sPrevented.empty() ? Json() : Json(sPrevented);
    output.Answer(result, "");
}

} // namespace

void AddAdapterChanges(CLI::App& noun, Output& output)
{
    CLI::App& enable = AddVerb(noun, {"enable", "Start an adapter's device", "adapter enable lan0"});
    RunChange(enable, output, [adapter = AddAdapterArgument(enable, Among::INSTALLED)] { return Enable(adapter()); });

    CLI::App& disable = AddVerb(noun, {"disable", "Stop an adapter's device", "adapter disable lan0 --yes"});
    RunChange(disable, output,
              [adapter = AddAdapterArgument(disable, Among::INSTALLED)] { return Disable(adapter()); });

    CLI::App& setMac = AddVerb(noun, {"set-mac", "Give an adapter another hardware address and restart it",
                                      "adapter set-mac lan0 02-00-00-00-00-01 --check"});
    auto adapter = AddAdapterArgument(setMac);
    const auto mac = AddArgument(setMac, "ADDRESS", "The hardware address", "XX-XX-XX-XX-XX-XX");
    RunChange(setMac, output, [adapter, mac] {
        const auto address = ParseHardwareAddress(mac());
        return SetMac(adapter(), address);
    });

    CLI::App& options =
        AddVerb(noun, {"options", "Open the system's property sheet of an adapter", "adapter options lan0"});
    AddJsonFlag(options, output);
    Run(options, [&output, adapter = AddAdapterArgument(options)] { ShowOptions(adapter(), output); });
}

} // namespace zelkctl
