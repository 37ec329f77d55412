#include <state/fields/item.h>

namespace zelk
{
namespace
{

std::uint32_t SchemaVersion(const Machine&)
{
    return SCHEMA_VERSION;
}

std::string WindowsVersion(const Environment& environment)
{
    return std::to_string(environment.majorVersion) + '.' + std::to_string(environment.minorVersion);
}

constexpr Field<Machine> MACHINE[] = {
    Item<Machine, SchemaVersion>("schemaVersion", "Schema version",
                                 "Raised when a member is renamed, removed or changes its meaning."),
    Item<Machine, &Machine::environment>("environment", "Environment", "The Windows that runs."),
    Item<Machine, &Machine::identity>("identity", "Identity", "The names of the machine."),
    Item<Machine, &Machine::adapters>("adapters", "Adapters", "All network adapters, whatever their state."),
    Item<Machine, &Machine::unassignedRoutes>("unassignedRoutes", "Unassigned routes",
                                              "Persistent routes whose next hop is on no adapter's network."),
    Item<Machine, &Machine::problems>("problems", "Problems", "What could not be read, apart from single adapters."),
};

constexpr Field<Environment> ENVIRONMENT[] = {
    Item<Environment, WindowsVersion>("windowsVersion", "Windows version", "Major and minor version of the system."),
    Item<Environment, &Environment::build>("windowsBuild", "Windows build", "Build number of the system."),
    Item<Environment, &Environment::servicePack>("servicePack", "Service pack", "Empty where there is none."),
    Item<Environment, &Environment::product>("product", "Product", "Name of the product."),
    Item<Environment, &Environment::backEnd>("backEnd", "Back end", "The generation of functions that is used."),
    Item<Environment, &Environment::bootImage>("bootImage", "Boot image",
                                               "Whether the system runs from a pre-installation image."),
    Item<Environment, &Environment::protocolBinding>("protocolBinding", "Protocol binding",
                                                     "Whether protocols can be bound to adapters and unbound."),
    Item<Environment, &Environment::elevated>("elevated", "Elevated",
                                              "Whether this process may change the configuration."),
};

constexpr Field<Identity> IDENTITY[] = {
    Item<Identity, &Identity::computerName>("computerName", "Computer name", "DNS host name, without a suffix."),
    Item<Identity, &Identity::fullComputerName>("fullComputerName", "Full computer name",
                                                "Host name and primary DNS suffix."),
    Item<Identity, &Identity::primaryDnsSuffix>("primaryDnsSuffix", "Primary DNS suffix",
                                                "DNS domain of the machine; empty where it has none."),
    Item<Identity, &Identity::netbiosName>("netbiosName", "NetBIOS name", "The name as older networks know it."),
    Item<Identity, &Identity::membership>("membership", "Membership", "What the machine is a member of."),
    Item<Identity, &Identity::workgroup>("workgroup", "Workgroup", "Null for a member of a domain."),
    Item<Identity, &Identity::domain>("domain", "Domain", "Null for a member of a workgroup."),
    Item<Identity, &Identity::configured>("configured", "Configured", "The names from the next start on."),
};

constexpr Field<ConfiguredIdentity> CONFIGURED_IDENTITY[] = {
    Item<ConfiguredIdentity, &ConfiguredIdentity::computerName>("computerName", "Computer name",
                                                                "DNS host name from the next start on."),
    Item<ConfiguredIdentity, &ConfiguredIdentity::primaryDnsSuffix>("primaryDnsSuffix", "Primary DNS suffix",
                                                                    "DNS domain from the next start on."),
    Item<ConfiguredIdentity, &ConfiguredIdentity::netbiosName>("netbiosName", "NetBIOS name",
                                                               "NetBIOS name from the next start on."),
};

constexpr Field<Problem> PROBLEM[] = {
    Item<Problem, &Problem::code>("code", "Code", "Windows error code."),
    Item<Problem, &Problem::step>("step", "Step", "The function or the registry value that failed."),
    Item<Problem, &Problem::text>("text", "Text", "What is missing now."),
    Item<Problem, &Problem::systemMessage>("systemMessage", "System message",
                                           "The system's own text for the code; empty where it has none."),
};

} // namespace

template <>
FieldTable<Machine> FieldsOf()
{
    return {"machine", MACHINE};
}

template <>
FieldTable<Environment> FieldsOf()
{
    return {"environment", ENVIRONMENT};
}

template <>
FieldTable<Identity> FieldsOf()
{
    return {"identity", IDENTITY};
}

template <>
FieldTable<ConfiguredIdentity> FieldsOf()
{
    return {"configuredIdentity", CONFIGURED_IDENTITY};
}

template <>
FieldTable<Problem> FieldsOf()
{
    return {"problem", PROBLEM};
}

} // namespace zelk
