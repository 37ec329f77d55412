#include "report/machine_parser.h"

#include <algorithm>
#include <utility>

#include <state/answers/pending_list.h>
#include <state/desired/json_reading.h>
#include <state/desired/object_reader.h>
#include <state/fields/schema.h>

#include "change/change_schema.h"
#include "records/answer_schema.h"
#include "report/conformity.h"
#include "trace/trace_record.h"

namespace zelkctl
{
namespace
{

using Faults = std::vector<zelk::Fault>;

constexpr std::size_t READING = 0;
constexpr std::size_t APPLIED = 2;

bool Has(const Json& json, const char* pszMember)
{
    return json.is_object() && json.contains(pszMember);
}

bool HasText(const Json& json, const char* pszMember)
{
    return Has(json, pszMember) && json[pszMember].is_string();
}

/// Whether an answer from the tool stands in its envelope.
bool IsAnswer(const Json& json)
{
    return HasText(json, "command") && (Has(json, "result") || Has(json, "error"));
}

void AddError(Json& machine, const std::string& sError)
{
    const std::string sBefore = HasText(machine, "error") ? machine["error"].get<std::string>() + '\n' : "";
    machine["error"] = sBefore + sError;
}

} // namespace

MachineParser::MachineParser()
    : m_parts({{{"reading", "environment", "show --json", zelk::MachineSchema()},
                {"difference", "items", "apply FILE --check --json", DifferencesSchema()},
                {"apply", "outcome", "apply FILE --json", AppliedSchema()},
                {"trace", nullptr, "trace show --json", ListOf<TraceRecord>()}}}),
      m_definitions(m_parts[READING].schema["$defs"])
{
    m_definitions.update(zelk::Definitions<TraceRecord>());
    m_definitions.update(zelk::Definitions<zelk::PendingEntry>());
}

Json MachineParser::Machines(std::string_view text, const std::string& sName, Faults& faults) const
{
    Json machines = Json::array();
    const auto json = zelk::ParseJson(text, faults);
    if (!json)
        return machines;
    if (!Has(*json, "machines"))
        machines.push_back(MachineOf(*json, "", sName, faults));
    else if (!(*json)["machines"].is_array())
        zelk::Refuse(faults, "/machines", "must be a list");
    else
        for (std::size_t i = 0; i < (*json)["machines"].size(); ++i)
            machines.push_back(MachineOf((*json)["machines"][i], zelk::PlaceOf("/machines", i), sName, faults));
    return machines;
}

void MachineParser::AddApplied(Json& machine, std::string_view text, Faults& faults) const
{
    if (const auto json = zelk::ParseJson(text, faults))
        AddPart(machine, m_parts[APPLIED], *json, "", faults);
}

Json MachineParser::MachineOf(const Json& json, const std::string& sPlace, const std::string& sName,
                              Faults& faults) const
{
    if (!HasText(json, "machine"))
        return MachineOfReading(json, sPlace, sName, faults);
    Json machine = {{"machine", json["machine"]}};
    if (HasText(json, "error"))
        machine["error"] = json["error"];
    for (const Part& part : m_parts)
        if (Has(json, part.pszKey) && !json[part.pszKey].is_null())
            AddPart(machine, part, json[part.pszKey], zelk::PlaceOf(sPlace, std::string_view(part.pszKey)), faults);
    if (machine.size() == 1 && faults.empty())
        zelk::Refuse(faults, sPlace, R"(has neither "reading", "difference", "apply", "trace" nor "error")");
    return machine;
}

Json MachineParser::MachineOfReading(const Json& json, const std::string& sPlace, const std::string& sName,
                                     Faults& faults) const
{
    Json machine = {{"machine", sName}};
    AddPart(machine, m_parts[READING], json, sPlace, faults);
    if (faults.empty() && Has(machine, "reading") && Has(machine["reading"], "identity"))
        if (const Json& identity = machine["reading"]["identity"]; HasText(identity, "computerName"))
            machine["machine"] = identity["computerName"];
    return machine;
}

void MachineParser::AddPart(Json& machine, const Part& part, const Json& given, std::string sPlace,
                            Faults& faults) const
{
    const bool bAnswer = IsAnswer(given);
    if (bAnswer && Has(given, "error"))
    {
        AddError(machine, HasText(given["error"], "reason") ? given["error"]["reason"].get<std::string>()
                                                            : given["error"].dump());
        return;
    }
    const Json& value = bAnswer ? given["result"] : given;
    if (bAnswer)
        sPlace += "/result";
    if (part.pszMember != nullptr && !Has(value, part.pszMember))
        zelk::Refuse(faults, sPlace,
                     std::string("is not what \"zelkctl ") + part.pszCommand + "\" prints: it lacks \"" +
                         part.pszMember + '"');
    else if (auto misfit = FindMisfit(value, part.schema, m_definitions, sPlace))
        faults.push_back(std::move(*misfit));
    else
        machine[part.pszKey] = value;
}

} // namespace zelkctl
