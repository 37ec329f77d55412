#include "verbs/state_commands.h"

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/reading/read_machine.h>

#include "answer/value_text.h"
#include "change/change_schema.h"
#include "parser/document.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

Answer Export(const std::vector<std::string>& names)
{
    const zelk::Machine machine = zelk::ReadMachine();
    std::vector<const zelk::Adapter*> adapters;
    for (const std::string& sName : names)
        adapters.push_back(&FindAdapter(machine, sName));
    const bool bAll = names.empty();
    const auto result = zelk::ExportState(machine, bAll ? zelk::ExportedAdapters(machine) : adapters, bAll);
    Json state = zelk::ToJson(result.state);
    std::string sText = Dump(state, 2) + '\n';
    return {.value = std::move(state), .text = std::move(sText), .notes = result.leftOut};
}

void AddExport(Command tool)
{
    Command verb =
        tool.AddVerb({"export", "Print the configuration of adapters as a desired state", "export lan0 > lan0.json"});
    verb.AddRemark("Without ADAPTER it prints all adapters and the names of the machine. \"zelkctl apply\" takes the "
                   "machine back to that state.");
    const auto names = verb.AddOptionalArguments({ADAPTER_ARGUMENT, "Only these adapters", ADAPTER_FORM});
    verb.Answers({}, [names] { return Export(names()); });
}

StateChange ParseChange(const std::string& sFile)
{
    std::vector<zelk::Fault> faults;
    StateChange change{.state = zelk::ParseDesiredState(ReadDocument("FILE", sFile), faults),
                       .sDone = "The machine is in the desired state.",
                       .bIsDocument = true};
    RefuseDocument(faults);
    return change;
}

void AddApply(Command tool)
{
    Command verb = tool.AddVerb({"apply", "Take the machine to a desired state", "apply lan0.json --check"});
    verb.AddRemark("Whatever the document does not mention is left alone. If a step fails, or on Ctrl+C, what was done "
                   "is undone.");
    const auto file =
        verb.AddArgument({"FILE", "Document with the desired state; - reads the standard input", "PATH|-"});
    const auto options = AddStateChangeOptions(verb);
    verb.Answers(StateChangeSchema, [file, options] {
        const auto given = options();
        return Perform([change = ParseChange(file())](const zelk::Machine&) { return change; }, given);
    });
}

} // namespace

void AddStateCommands(Command tool)
{
    AddExport(tool);
    AddApply(tool);
}

} // namespace zelkctl
