#include "verbs/adapter_changes.h"

#include <string>

#include <state/fields/json_value.h>

#include "adapters/library_call.h"
#include "answer/cell_text.h"
#include "answer/failure.h"
#include "records/answer_schema.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

void AddEnable(Command noun)
{
    Command verb = noun.AddVerb({"enable", "Enable an adapter", "adapter enable lan0"});
    MakeStateVerb(verb, [adapter = AddAdapterIn(verb)](const zelk::Machine& machine) {
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        desired.enabled = true;
        return ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " is enabled.");
    });
}

void AddDisable(Command noun)
{
    Command verb = noun.AddVerb({"disable", "Disable an adapter", "adapter disable lan0 --yes"});
    MakeStateVerb(verb, [adapter = AddAdapterIn(verb)](const zelk::Machine& machine) {
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        desired.enabled = false;
        StateChange change = ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " is disabled.");
        change.bCanDisconnect = true;
        return change;
    });
}

void AddRename(Command noun)
{
    Command verb = noun.AddVerb({"rename", "Rename the connection of an adapter", "adapter rename lan0 Uplink"});
    const auto adapter = AddAdapterIn(verb);
    const auto name = verb.AddArgument({"NAME", "The new name", "NAME"});
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        desired.connectionName = name();
        return ChangeOf(found, std::move(desired),
                        "Adapter " + Quoted(found) + " is called " + Quoted(name()) + " now.");
    });
}

zelk::AutomaticOr<zelk::HardwareAddress> ParseHardwareAddress(const std::string& sText)
{
    if (sText == "default")
        return zelk::Automatic();
    if (const auto address = zelk::HardwareAddress::Parse(sText))
        return *address;
    throw UsageError("ADDRESS", Quoted(sText) + " is neither a hardware address nor \"default\"");
}

void AddSetMac(Command noun)
{
    Command verb = noun.AddVerb({"set-mac", "Set the hardware address of an adapter and restart it",
                                 "adapter set-mac lan0 02-00-00-00-00-01 --check"});
    const auto adapter = AddAdapterIn(verb);
    const auto mac = verb.AddArgument(
        {"ADDRESS", "The new hardware address, or \"default\" for the adapter's own", "XX-XX-XX-XX-XX-XX|default"});
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        zelk::DesiredAdapter desired;
        desired.hardwareAddress = ParseHardwareAddress(mac());
        const zelk::Adapter& found = adapter(machine);
        StateChange change =
            ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " has the hardware address given.");
        change.bCanDisconnect = true;
        return change;
    });
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
    AddEnable(noun);
    AddDisable(noun);
    AddRename(noun);
    AddSetMac(noun);
    Command options =
        noun.AddVerb({"options", "Open the system's property sheet of an adapter", "adapter options lan0"});
    options.AddJsonFlag();
    options.Answers(OptionsSchema, [adapter = AddAdapterArgument(options)] { return ShowOptions(adapter()); });
}

} // namespace zelkctl
