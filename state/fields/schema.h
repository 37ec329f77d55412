#pragma once

#include <string>

#include <state/fields/json_value.h>

namespace zelk
{

/// The JSON Schema of one record.
template <class Record>
Json SchemaOfRecord()
{
    Json properties = Json::object();
    Json required = Json::array();
    for (const Field<Record>& field : FieldsOf<Record>())
    {
        Json schema = field.schema();
        schema["title"] = field.label;
        schema["description"] = field.help + (*field.unit != '\0' ? " In " + std::string(field.unit) + '.' : "");
        properties[field.key] = std::move(schema);
        required.push_back(field.key);
    }
    return {{"type", "object"}, {"properties", std::move(properties)}, {"required", std::move(required)}};
}

/// Those of several records, each under the name by which references know it.
template <class... Records>
Json Definitions()
{
    Json definitions = Json::object();
    ((definitions[FieldsOf<Records>().name] = SchemaOfRecord<Records>()), ...);
    return definitions;
}

/// The JSON Schema (draft 2020-12) of a whole machine as ToJson writes it. Other schemas of the tool take its "$defs".
Json MachineSchema();

} // namespace zelk
