#include "verbs/doctor_commands.h"

#include <algorithm>
#include <string>

#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "doctor/examination.h"
#include "doctor/library_version.h"
#include "records/answer_schema.h"
#include "records/trace_settings.h"
#include "system/console.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

Colour ColourOf(Severity severity)
{
    switch (severity)
    {
    case Severity::OK: return Colour::GOOD;
    case Severity::NOTE: return Colour::WATCH;
    default: return Colour::BAD;
    }
}

/// The word in colour; the sentences of all findings begin in the same column.
std::string LineOf(const Finding& finding)
{
    constexpr std::size_t COLUMN = 7;
    const std::string sWord = zelk::WordOf(finding.severity).word;
    return Painted(sWord, ColourOf(finding.severity), stdout) + std::string(COLUMN - sWord.size(), ' ') +
           Printable(finding.sText) + '\n';
}

Answer Diagnose()
{
    const zelk::Machine machine = zelk::ReadMachine();
    const TraceLocation location = LocateTrace();
    const auto findings = Examine(machine);
    Answer answer;
    answer.value["environment"] = zelk::ToJson(machine.environment);
    answer.value["libraryVersion"] = ReadLibraryVersion().version;
    answer.value["logDirectory"] = ToUtf8(location.sDirectory);
    answer.value["traceLevel"] = ReadTraceSettings(location).uiLevel;
    answer.value["findings"] = RecordsOf(findings);
    answer.text = "";
    for (const Finding& finding : findings)
        *answer.text += LineOf(finding);
    if (std::ranges::find(findings, Severity::WRONG, &Finding::severity) != findings.end())
        answer.code = EXIT_OPERATION_FAILED;
    return answer;
}

Json DiagnosisSchema()
{
    return ObjectOf({{"environment", zelk::ReferenceTo("environment")},
                     {"libraryVersion", zelk::SchemaOfType("string")},
                     {"logDirectory", zelk::SchemaOfType("string")},
                     {"traceLevel", zelk::SchemaOfType("integer")},
                     {"findings", ListOf<Finding>()}});
}

} // namespace

void AddDoctorCommand(Command tool)
{
    Command verb = tool.AddVerb({"doctor", "Find what keeps the tool or the library from working", "doctor"});
    verb.AddJsonFlag();
    verb.AddRemark("Every line begins with \"ok\", \"note\" or \"wrong\". The exit code is 1 if anything is wrong.");
    verb.Answers(DiagnosisSchema, Diagnose);
}

} // namespace zelkctl
