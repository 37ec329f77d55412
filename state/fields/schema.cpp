#include <state/fields/schema.h>

#include <string>

#include <state/fields/json_value.h>

namespace zelk
{

namespace
{

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

template <class... Records>
Json Definitions()
{
    Json definitions = Json::object();
    ((definitions[FieldsOf<Records>().name] = SchemaOfRecord<Records>()), ...);
    return definitions;
}

} // namespace

Json MachineSchema()
{
    Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                   {"title", "Network state of a machine"}};
    schema.update(SchemaOfRecord<Machine>());
    schema["properties"]["schemaVersion"]["const"] = SCHEMA_VERSION;
    schema["$defs"] = Definitions<Environment, Identity, ConfiguredIdentity, Adapter, Driver, DeviceProblem, IpSettings,
                                  ConfiguredIp, Address, Gateway, Lease, Route, Problem>();
    return schema;
}

} // namespace zelk
