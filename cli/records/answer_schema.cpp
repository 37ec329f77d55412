#include "records/answer_schema.h"

#include <state/answers/pending_list.h>
#include <state/fields/schema.h>
#include <state/notifications/adapter_event.h>

#include "answer/render.h"
#include "records/finding.h"
#include "records/tcp6_connection.h"
#include "records/trace_settings.h"
#include "trace/trace_record.h"

namespace zelkctl
{
namespace
{

Json TextSchema()
{
    return zelk::SchemaOfType("string");
}

Json TextOrNullSchema()
{
    return zelk::OrNull(TextSchema());
}

Json ErrorSchema()
{
    return ObjectOf({{"kind", {{"enum", {"failed", "usage", "adapter", "elevation", "busy", "unsupported"}}}},
                     {"exitCode", zelk::SchemaOfType("integer")},
                     {"operation", TextOrNullSchema()},
                     {"adapter", TextOrNullSchema()},
                     {"reason", TextSchema()},
                     {"hint", TextOrNullSchema()}});
}

Json Definitions()
{
    const Json machine = zelk::MachineSchema();
    Json definitions = machine["$defs"];
    definitions.update(zelk::Definitions<zelk::Machine, zelk::PendingEntry, zelk::AdapterEvent, Finding, TraceRecord,
                                         TraceSettings, TracePath, Tcp6Connection>());
    definitions[DNS_SERVER_RECORD] = ObjectOf({{"address", zelk::JsonValue<zelk::IpAddress>::Schema()}});
    definitions["error"] = ErrorSchema();
    return definitions;
}

Json EnvelopeWith(const char* pszMember)
{
    return {{"required", {"schemaVersion", "command", pszMember}}};
}

/// What this command's result has to be, where the answer has one.
Json Condition(const CommandSchema& command)
{
    Json condition;
    condition["if"] = {{"properties", {{"command", {{"const", command.first}}}}}, {"required", {"result"}}};
    condition["then"] = {{"properties", {{"result", command.second()}}}};
    return condition;
}

} // namespace

Json ListOf(const std::string& sRecord)
{
    return {{"type", "array"}, {"items", zelk::ReferenceTo(sRecord.c_str())}};
}

Json AnyOf(std::initializer_list<Json> schemas)
{
    return {{"anyOf", Json::array_t(schemas)}};
}

Json ObjectOf(std::initializer_list<std::pair<const char*, Json>> members)
{
    Json properties = Json::object();
    Json required = Json::array();
    for (const auto& [pszKey, schema] : members)
    {
        properties[pszKey] = schema;
        required.push_back(pszKey);
    }
    return {{"type", "object"}, {"properties", std::move(properties)}, {"required", std::move(required)}};
}

Json AnswersSchema(const std::vector<CommandSchema>& commands)
{
    Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                   {"title", "What zelkctl prints with --json"},
                   {"type", "object"}};
    schema["properties"] = {{"schemaVersion", {{"const", SCHEMA_VERSION}}},
                            {"command", TextSchema()},
                            {"error", zelk::ReferenceTo("error")}};
    schema["oneOf"] = Json::array({EnvelopeWith("result"), EnvelopeWith("error")});
    for (const char* pszRecord : {zelk::FieldsOf<zelk::AdapterEvent>().name, zelk::FieldsOf<TraceRecord>().name})
        schema["oneOf"].push_back(zelk::ReferenceTo(pszRecord)); // the lines of a verb that goes on
    schema["allOf"] = Json::array();
    for (const CommandSchema& command : commands)
        schema["allOf"].push_back(Condition(command));
    schema["$defs"] = Definitions();
    return schema;
}

} // namespace zelkctl
