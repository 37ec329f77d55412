#include "verbs/adapter_changes.h"

#include <string>

#include <state/fields/json_value.h>

#include "adapters/library_call.h"
#include "answer/cell_text.h"
#include "records/answer_schema.h"
#include "system/utf8.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

Change Enable(const zelk::Adapter& adapter)
{
    return {.sOperation = "EnableAdapter",
            .adapter = adapter,
            .sDoing = "Enabling the adapter",
            .sDone = "Adapter " + Quoted(adapter) + " is enabled.",
            .aspects = {ItemBecomes(adapter, "enabled", true)},
            .operation = [info = NicInfoOf(adapter)] { return TOLVA::EnableAdapter(info); }};
}

Change Disable(const zelk::Adapter& adapter)
{
    return {.sOperation = "DisableAdapter",
            .adapter = adapter,
            .sDoing = "Disabling the adapter",
            .sDone = "Adapter " + Quoted(adapter) + " is disabled.",
            .aspects = {ItemBecomes(adapter, "enabled", false)},
            .operation = [info = NicInfoOf(adapter)] { return TOLVA::DisableAdapter(info); },
            .reach = Reach::SESSION};
}

TOLVA::HARDWARE_ADDRESS ParseHardwareAddress(const std::string& sText)
{
    const TraceReader trace;
    const TOLVA::HARDWARE_ADDRESS address(velmor::string(FromUtf8(sText)));
    if (address.size() == 0)
        throw UsageError("ADDRESS", Quoted(sText) + " is not a hardware address: " + Explanation(trace));
    return address;
}

Change SetMac(const zelk::Adapter& adapter, const TOLVA::HARDWARE_ADDRESS& address)
{
    const std::string sAddress = ToUtf8(velmor::string(address).c_str());
    return {.sOperation = "SetHardwareAddress",
            .adapter = adapter,
            .sDoing = "Restarting the adapter",
            .sDone = "Adapter " + Quoted(adapter) + " has the hardware address " + sAddress + '.',
            .aspects = {ItemBecomes(adapter, "hardwareAddress", sAddress)},
            .operation = [address, info = NicInfoOf(adapter)] { return TOLVA::SetHardwareAddress(info, address); },
            .reach = Reach::SESSION};
}

/// The system may have no sheet to show; the library does not call that a failure.
Answer ShowOptions(const zelk::Adapter& adapter)
{
    const TraceReader trace;
    Call("ChangeAdapterOptions", &adapter, [info = NicInfoOf(adapter)] { return TOLVA::ChangeAdapterOptions(info); });
    const std::string sPrevented = trace.Problems().empty() ? "" : Explanation(trace);
    Json result;
    result["shown"] = sPrevented.empty();
    result["reason"] = sPrevented.empty() ? Json() : Json(sPrevented);
    return {.value = std::move(result),
            .text = "",
            .notes = {sPrevented.empty()
                          ? "The options of adapter " + Quoted(adapter) + " were shown."
                          : "The options of adapter " + Quoted(adapter) + " could not be shown: " + sPrevented}};
}

Json OptionsSchema()
{
    return ObjectOf({{"shown", zelk::SchemaOfType("boolean")}, {"reason", zelk::OrNull(zelk::SchemaOfType("string"))}});
}

} // namespace

void AddAdapterChanges(Command noun)
{
    Command enable = noun.AddVerb({"enable", "Enable an adapter", "adapter enable lan0"});
    MakeChangeVerb(enable, [adapter = AddAdapterArgument(enable)] { return Enable(adapter()); });

    Command disable = noun.AddVerb({"disable", "Disable an adapter", "adapter disable lan0 --yes"});
    MakeChangeVerb(disable, [adapter = AddAdapterArgument(disable)] { return Disable(adapter()); });

    Command setMac = noun.AddVerb({"set-mac", "Set the hardware address of an adapter and restart it",
                                   "adapter set-mac lan0 02-00-00-00-00-01 --check"});
    const auto adapter = AddAdapterArgument(setMac);
    const auto mac = setMac.AddArgument({"ADDRESS", "The new hardware address", "XX-XX-XX-XX-XX-XX"});
    MakeChangeVerb(setMac, [adapter, mac] {
        const auto address = ParseHardwareAddress(mac());
        return SetMac(adapter(), address);
    });

    Command options =
        noun.AddVerb({"options", "Open the system's property sheet of an adapter", "adapter options lan0"});
    options.AddJsonFlag();
    options.Answers(OptionsSchema, [adapter = AddAdapterArgument(options)] { return ShowOptions(adapter()); });
}

} // namespace zelkctl
