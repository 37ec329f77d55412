#include "verbs/machine_commands.h"

#include <state/fields/field.h>
#include <state/reading/read_machine.h>

#include "adapters/adapter.h"
#include "answer/render.h"
#include "answer/value_text.h"
#include "doctor/library_version.h"
#include "records/answer_schema.h"
#include "records/shown_fields.h"

namespace zelkctl
{
namespace
{

std::string Section(const std::string& sHeading, const std::vector<Field>& fields, const Json& record)
{
    return sHeading + '\n' + RecordTable(fields, record, true);
}

std::string MachineText(const zelk::Machine& machine)
{
    std::string text = Section("System", ShownFields<zelk::Environment>(), zelk::ToJson(machine.environment)) + '\n' +
                       Section("Identity", ShownFields<zelk::Identity>(), zelk::ToJson(machine.identity));
    for (const zelk::Adapter& adapter : machine.adapters)
        text += '\n' + Section("Adapter " + Quoted(adapter), ShownFields<zelk::Adapter>(), zelk::ToJson(adapter));
    for (const zelk::Problem& problem : machine.problems)
        text += "\nProblem: " + TextOf(zelk::ToJson(problem)) + '\n';
    return text;
}

void AddShow(Command tool)
{
    Command verb = tool.AddVerb({"show", "Show the whole machine: system, names and all adapters", "show --json"});
    const auto fields = ShownFields<zelk::Machine>();
    verb.AddFormOptions(fields);
    verb.Answers([] { return zelk::ReferenceTo("machine"); },
                 [fields] {
                     const zelk::Machine machine = zelk::ReadMachine();
                     return Answer{.value = zelk::ToJson(machine), .fields = fields, .text = MachineText(machine)};
                 });
}

void AddVersion(Command tool)
{
    Command verb = tool.AddVerb({"version", "Show the version of the library", "version --json"});
    verb.AddFormOptions({{"version", "Version"}, {"description", "Description"}});
    verb.Answers(
        [] {
            return ObjectOf({{"version", zelk::SchemaOfType("string")}, {"description", zelk::SchemaOfType("string")}});
        },
        VersionAnswer);
}

void AddSchema(Command tool)
{
    Command verb = tool.AddVerb({"schema", "Print the JSON Schema of everything that --json prints", "schema"});
    verb.Answers({}, [verb] { return Answer{.value = {}, .text = Dump(AnswersSchema(verb.AllSchemas()), 2) + '\n'}; });
}

} // namespace

Answer VersionAnswer()
{
    const zelk::LibraryVersion version = ReadLibraryVersion();
    return {.value = zelk::ToJson(version),
            .fields = {{"version", "Version"}, {"description", "Description"}},
            .text = "ZELK_NM.DLL " + version.version + '\n' + version.description + '\n'};
}

void AddMachineCommands(Command tool)
{
    AddShow(tool);
    AddVersion(tool);
    AddSchema(tool);
}

} // namespace zelkctl
