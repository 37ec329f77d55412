#include "verbs/adapter_commands.h"

#include <algorithm>
#include <functional>
#include <string>

#include <state/fields/json_value.h>
#include <state/reading/read_machine.h>

#include "records/answer_schema.h"
#include "verbs/adapter_changes.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

/// Whether a list of adapters that work has it.
bool IsWorking(const zelk::Adapter& adapter)
{
    using enum zelk::AdapterStatus;
    return adapter.status != DISABLED && adapter.status != FAILED && adapter.status != NOT_PRESENT;
}

std::string LeftOutText(std::size_t count)
{
    return count == 1
               ? "1 adapter that is disabled or does not work is not shown; --all shows it."
               : std::to_string(count) + " adapters that are disabled or do not work are not shown; --all shows them.";
}

void AddList(Command noun)
{
    Command verb =
        noun.AddVerb({"list", "Show the network adapters", "adapter list --fields name,status,ipv4.gateways"});
    verb.AddRemark("Without ADAPTER it shows all adapters that work.");
    const auto fields = AdapterListFields();
    const auto wanted = verb.AddOptionalArguments({ADAPTER_ARGUMENT, "Only these adapters", ADAPTER_FORM});
    const auto all = verb.AddFlag("--all", "Include adapters that are disabled or do not work");
    verb.AddFormOptions(fields);
    verb.AddColumnOptions(fields);
    verb.Answers([] { return ListOf("adapter"); }, [=] { return ListAdapters(wanted(), all()); });
}

void AddShow(Command noun)
{
    Command verb = noun.AddVerb({"show", "Show everything that is known about one adapter", "adapter show lan0"});
    const auto fields = ShownFields<zelk::Adapter>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return zelk::ReferenceTo("adapter"); },
                 [fields, adapter = AddAdapterArgument(verb)] {
                     return Answer{.value = zelk::ToJson(adapter()), .fields = fields, .bOmitAbsent = true};
                 });
}

Json WantedAdapters(const zelk::Machine& machine, const std::vector<std::string>& wanted)
{
    Json records = Json::array();
    for (const std::string& sWanted : wanted)
        records.push_back(zelk::ToJson(FindAdapter(machine, sWanted)));
    return records;
}

} // namespace

std::vector<Field> AdapterListFields()
{
    auto fields = ShownFields<zelk::Adapter>();
    fields.push_back({.sKey = "addresses", .sLabel = "Addresses", .sources = {"ipv4.addresses", "ipv6.addresses"}});
    return fields;
}

Answer ListAdapters(const std::vector<std::string>& wanted, bool bAll)
{
    const zelk::Machine machine = zelk::ReadMachine({.identity = false});
    Answer answer{.value = WantedAdapters(machine, wanted),
                  .fields = AdapterListFields(),
                  .columns = {"name", "status", "addresses", "hardwareAddress", "index"},
                  .wideColumns = {"name", "status", "addresses", "hardwareAddress", "index", "type", "ipv4.gateways",
                                  "ipv6.gateways", "guid", "description"},
                  .sWhenEmpty = "This machine has no network adapter that works."};
    if (!wanted.empty())
        return answer;
    std::size_t leftOut = 0;
    for (const zelk::Adapter& adapter : machine.adapters)
    {
        if (adapter.hidden)
            continue;
        if (bAll || IsWorking(adapter))
            answer.value.push_back(zelk::ToJson(adapter));
        else
            ++leftOut;
    }
    if (leftOut > 0)
        answer.notes.push_back(LeftOutText(leftOut));
    return answer;
}

void AddAdapterCommands(Command tool)
{
    Command noun = tool.AddNoun({"adapter", "Network adapters", "adapter show {00000002-0000-0000-0000-4E6574446576}"});
    AddList(noun);
    AddShow(noun);
    AddAdapterChanges(noun);
}

} // namespace zelkctl
