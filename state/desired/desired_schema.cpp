#include <state/desired/json_form.h>
#include <state/fields/json_value.h>

namespace zelk
{
namespace
{

struct Member
{
    const char* key;
    const char* help;
    Json schema;
};

/// An object that has these members and no others.
Json ObjectOf(std::initializer_list<Member> members, Json required = Json::array())
{
    Json properties = Json::object();
    for (const Member& member : members)
    {
        properties[member.key] = member.schema;
        properties[member.key]["description"] = member.help;
    }
    Json object = {{"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
    if (!required.empty())
        object["required"] = std::move(required);
    return object;
}

Json ListOf(Json element)
{
    return {{"type", "array"}, {"items", std::move(element)}, {"uniqueItems", true}};
}

Json OrAutomatic(Json schema)
{
    return {{"anyOf", Json::array({std::move(schema), {{"const", "automatic"}}})}};
}

Json Number(int least, int greatest)
{
    return {{"type", "integer"}, {"minimum", least}, {"maximum", greatest}};
}

Json GatewaySchema(const Json& address)
{
    const Json object = ObjectOf({{"address", "Address of the gateway.", address},
                                  {"metric", "Metric of its default route; left alone when absent.", Number(1, 9999)}},
                                 {"address"});
    return {{"anyOf", Json::array({address, object})}};
}

Json IpSchema(Family family)
{
    const Json address = SchemaOfType("string", family == Family::IPV4 ? "ipv4" : "ipv6");
    Json schema = ObjectOf(
        {{"addresses", "Exactly these static addresses with their prefix lengths.", ListOf(SchemaOfText<IpPrefix>())},
         {"gateways", "Exactly these static default gateways.", ListOf(GatewaySchema(address))},
         {"dnsServers", "Exactly these servers in this order, or automatic.", OrAutomatic(ListOf(address))},
         {"metric", "Metric of the interface, or automatic.", OrAutomatic(Number(1, 9999))},
         {"mtu", "Largest packet, in bytes.", Number(family == Family::IPV4 ? 576 : 1280, 65535)}});
    const auto add = [&](const char* key, const char* help, Json one) {
        one["description"] = help;
        schema["properties"][key] = std::move(one);
    };
    if (family == Family::IPV6)
        add("enabled", "Whether IPv6 is bound to the adapter.", SchemaOfType("boolean"));
    else
    {
        add("dhcp", "Whether the adapter is a DHCP client; false with addresses.", SchemaOfType("boolean"));
        add("dnsSuffix", "DNS suffix of the connection; empty for none.", SchemaOfType("string"));
        add("netbios", "NetBIOS over TCP/IP, or as the DHCP server says.", {{"enum", {"dhcp", "enabled", "disabled"}}});
    }
    return schema;
}

Json RouteSchema()
{
    return ObjectOf({{"destination", "A network; default routes are gateways.", SchemaOfText<IpPrefix>()},
                     {"nextHop", "Gateway; absent for a destination on the link.", SchemaOfText<IpAddress>()},
                     {"metric", "Metric of the route; left alone when absent.", Number(1, 9999)},
                     {"store", "Whether it outlasts the next start.", {{"enum", {"active", "persistent"}}}}},
                    {"destination"});
}

Json AdapterSchema()
{
    return ObjectOf(
        {{"adapter", "Name, index, hardware address or GUID, as on the command line.", SchemaOfType("string")},
         {"enabled", "Whether the device is started.", SchemaOfType("boolean")},
         {"connectionName", "New name of the connection.", SchemaOfType("string")},
         {"hardwareAddress", "What the driver is told to use, or automatic for its own.",
          OrAutomatic(SchemaOfText<HardwareAddress>())},
         {"mtu", "Largest packet of both families, in bytes.", Number(1280, 65535)},
         {"ipv4", "Settings of IPv4.", IpSchema(Family::IPV4)},
         {"ipv6", "Settings of IPv6.", IpSchema(Family::IPV6)},
         {"routes", "Exactly these static routes of both families, apart from default routes.", ListOf(RouteSchema())}},
        {"adapter"});
}

} // namespace

Json DesiredStateSchema()
{
    Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                   {"title", "Desired network state of a machine"},
                   {"description", "What is absent is left alone."}};
    schema.update(ObjectOf(
        {{"schemaVersion", "Version of this form; absent for the newest.", {{"const", SCHEMA_VERSION}}},
         {"adapters", "Adapters, each named once.", {{"type", "array"}, {"items", AdapterSchema()}}},
         {"identity", "Names of the machine.",
          ObjectOf({{"computerName", "DNS host name from the next start on.", SchemaOfType("string")},
                    {"primaryDnsSuffix", "DNS domain from the next start on; empty for none.", SchemaOfType("string")},
                    {"workgroup", "Workgroup.", SchemaOfType("string")}})}}));
    return schema;
}

} // namespace zelk
