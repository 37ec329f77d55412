#include <state/fields/schema.h>

namespace zelk
{

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
