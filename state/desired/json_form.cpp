#include <state/desired/json_form.h>

#include <utility>

#include <state/desired/json_reading.h>
#include <state/desired/object_reader.h>
#include <state/fields/json_value.h>
#include <state/fields/words.h>

namespace zelk
{
namespace
{

using Faults = std::vector<Fault>;

constexpr const char* AUTOMATIC = "automatic";

/// Values that stand in JSON as their text.
template <class T>
auto TextOf(const char* wanted)
{
    return [wanted](const Json& json, const std::string& place, Faults& faults) -> std::optional<T> {
        auto value = json.is_string() ? T::Parse(json.get_ref<const std::string&>()) : std::nullopt;
        if (!value)
            return Refuse(faults, place, std::string("must be ") + wanted);
        return value;
    };
}

std::string Example(Family family, const char* tail)
{
    return std::string(FamilyName(family)) + " address" + tail + ", such as \"" +
           (family == Family::IPV4 ? "192.0.2.20" : "2001:db8::20") +
           (*tail != '\0' ? family == Family::IPV4 ? "/24" : "/64" : "") + '"';
}

auto AddressOf(Family family)
{
    return [family](const Json& json, const std::string& place, Faults& faults) -> std::optional<IpAddress> {
        auto address = json.is_string() ? IpAddress::Parse(json.get_ref<const std::string&>()) : std::nullopt;
        if (!address || address->GetFamily() != family)
            return Refuse(faults, place, "must be an " + Example(family, ""));
        return address;
    };
}

auto PrefixOf(Family family)
{
    return [family](const Json& json, const std::string& place, Faults& faults) -> std::optional<IpPrefix> {
        auto prefix = json.is_string() ? IpPrefix::Parse(json.get_ref<const std::string&>()) : std::nullopt;
        if (!prefix || prefix->address.GetFamily() != family)
            return Refuse(faults, place, "must be an " + Example(family, " with its prefix length"));
        return prefix;
    };
}

template <class Read>
auto ListOf(Read read)
{
    using Element = typename std::invoke_result_t<Read, const Json&, const std::string&, Faults&>::value_type;
    return [read](const Json& json, const std::string& place, Faults& faults) -> std::optional<std::vector<Element>> {
        if (!json.is_array())
            return Refuse(faults, place, "must be a list");
        std::vector<Element> elements;
        for (std::size_t i = 0; i < json.size(); ++i)
            if (auto element = read(json[i], PlaceOf(place, i), faults))
                elements.push_back(std::move(*element));
        return elements;
    };
}

template <class Read>
auto AutomaticOrA(Read read)
{
    using Value = typename std::invoke_result_t<Read, const Json&, const std::string&, Faults&>::value_type;
    return [read](const Json& json, const std::string& place, Faults& faults) -> std::optional<AutomaticOr<Value>> {
        if (json == AUTOMATIC)
            return Automatic();
        const std::size_t count = faults.size();
        auto value = read(json, place, faults);
        if (!value && faults.size() == count + 1 && faults.back().place == place)
            faults.back().text += ", or \"automatic\"";
        if (!value)
            return std::nullopt;
        return AutomaticOr<Value>(std::move(*value));
    };
}

/// An address alone, or an object where it has a metric.
auto GatewayOf(Family family)
{
    return [family](const Json& json, const std::string& place, Faults& faults) -> std::optional<Gateway> {
        if (!json.is_object())
        {
            const auto address = AddressOf(family)(json, place, faults);
            return address ? std::optional(Gateway{*address, std::nullopt}) : std::nullopt;
        }
        const std::size_t count = faults.size();
        Gateway gateway;
        ObjectReader reader(json, place, faults);
        reader.Require("address", gateway.address, AddressOf(family));
        reader.Take("metric", gateway.metric, ReadNumber);
        reader.Finish();
        return faults.size() == count ? std::optional(gateway) : std::nullopt;
    };
}

std::optional<RouteStore> ReadStore(const Json& json, const std::string& place, Faults& faults)
{
    if (json == WordOf(RouteStore::ACTIVE).word)
        return RouteStore::ACTIVE;
    if (json == WordOf(RouteStore::PERSISTENT).word)
        return RouteStore::PERSISTENT;
    return Refuse(faults, place, "must be \"active\" or \"persistent\"");
}

std::optional<DesiredRoute> ReadRoute(const Json& json, const std::string& place, Faults& faults)
{
    const std::size_t count = faults.size();
    DesiredRoute route;
    std::optional<IpAddress> nextHop;
    ObjectReader reader(json, place, faults);
    reader.Require("destination", route.destination,
                   TextOf<IpPrefix>("a network with its prefix length, such as \"198.51.100.0/24\""));
    reader.Take("nextHop", nextHop, AddressOf(route.destination.address.GetFamily()));
    reader.Take("metric", route.metric, ReadNumber);
    reader.Take("store", route.store, ReadStore);
    reader.Finish();
    route.nextHop = nextHop.value_or(IpAddress::Unspecified(route.destination.address.GetFamily()));
    return faults.size() == count ? std::optional(route) : std::nullopt;
}

std::optional<NetbiosSetting> ReadNetbios(const Json& json, const std::string& place, Faults& faults)
{
    const auto setting =
        json.is_string() ? ParseWord<NetbiosSetting>(json.get_ref<const std::string&>()) : std::nullopt;
    if (!setting)
        return Refuse(faults, place, "must be \"dhcp\", \"enabled\" or \"disabled\"");
    return setting;
}

auto IpOf(Family family)
{
    return [family](const Json& json, const std::string& place, Faults& faults) -> std::optional<DesiredIp> {
        DesiredIp ip;
        ObjectReader reader(json, place, faults);
        if (family == Family::IPV4)
            reader.Take("dhcp", ip.dhcp, ReadBool);
        else
            reader.Take("enabled", ip.enabled, ReadBool);
        reader.Take("addresses", ip.addresses, ListOf(PrefixOf(family)));
        reader.Take("gateways", ip.gateways, ListOf(GatewayOf(family)));
        reader.Take("dnsServers", ip.dnsServers, AutomaticOrA(ListOf(AddressOf(family))));
        reader.Take("metric", ip.metric, AutomaticOrA(ReadNumber));
        reader.Take("mtu", ip.mtu, ReadNumber);
        if (family == Family::IPV4)
            reader.Take("dnsSuffix", ip.dnsSuffix, ReadText);
        if (family == Family::IPV4)
            reader.Take("netbios", ip.netbios, ReadNetbios);
        reader.Finish();
        return ip;
    };
}

std::optional<DesiredAdapter> ReadAdapter(const Json& json, const std::string& place, Faults& faults)
{
    DesiredAdapter adapter;
    std::optional<DesiredIp> ipv4, ipv6;
    ObjectReader reader(json, place, faults);
    reader.Require("adapter", adapter.adapter, ReadText);
    reader.Take("enabled", adapter.enabled, ReadBool);
    reader.Take("connectionName", adapter.connectionName, ReadText);
    reader.Take("hardwareAddress", adapter.hardwareAddress,
                AutomaticOrA(TextOf<HardwareAddress>("a hardware address, such as \"02-00-5E-10-00-0A\"")));
    reader.Take("mtu", adapter.mtu, ReadNumber);
    reader.Take("ipv4", ipv4, IpOf(Family::IPV4));
    reader.Take("ipv6", ipv6, IpOf(Family::IPV6));
    reader.Take("routes", adapter.routes, ListOf(ReadRoute));
    reader.Finish();
    adapter.ipv4 = ipv4.value_or(DesiredIp());
    adapter.ipv6 = ipv6.value_or(DesiredIp());
    return adapter;
}

std::optional<DesiredIdentity> ReadIdentity(const Json& json, const std::string& place, Faults& faults)
{
    return ReadObject<DesiredIdentity>(json, place, faults, [](ObjectReader& reader, DesiredIdentity& identity) {
        reader.Take("computerName", identity.computerName, ReadText);
        reader.Take("primaryDnsSuffix", identity.primaryDnsSuffix, ReadText);
        reader.Take("workgroup", identity.workgroup, ReadText);
    });
}

/// Writes a member where there is a value.
template <class T>
void Put(Json& object, const char* key, const std::optional<T>& value)
{
    if (value)
        object[key] = JsonValue<T>::Write(*value);
}

Json ListOfGateways(const std::vector<Gateway>& gateways)
{
    Json list = Json::array();
    for (const Gateway& gateway : gateways)
        list.push_back(gateway.metric ? Json{{"address", gateway.address.ToText()}, {"metric", *gateway.metric}}
                                      : Json(gateway.address.ToText()));
    return list;
}

Json ListOfRoutes(const std::vector<DesiredRoute>& routes)
{
    Json list = Json::array();
    for (const DesiredRoute& route : routes)
    {
        Json json = {{"destination", route.destination.ToText()}};
        if (!route.nextHop.IsUnspecified())
            json["nextHop"] = route.nextHop.ToText();
        Put(json, "metric", route.metric);
        Put(json, "store", route.store);
        list.push_back(std::move(json));
    }
    return list;
}

Json ToJson(const DesiredIp& ip)
{
    Json json = Json::object();
    Put(json, "enabled", ip.enabled);
    Put(json, "dhcp", ip.dhcp);
    Put(json, "addresses", ip.addresses);
    if (ip.gateways)
        json["gateways"] = ListOfGateways(*ip.gateways);
    Put(json, "dnsServers", ip.dnsServers);
    Put(json, "metric", ip.metric);
    Put(json, "mtu", ip.mtu);
    Put(json, "dnsSuffix", ip.dnsSuffix);
    Put(json, "netbios", ip.netbios);
    return json;
}

Json ToJson(const DesiredAdapter& adapter)
{
    Json json = {{"adapter", adapter.adapter}};
    Put(json, "enabled", adapter.enabled);
    Put(json, "connectionName", adapter.connectionName);
    Put(json, "hardwareAddress", adapter.hardwareAddress);
    Put(json, "mtu", adapter.mtu);
    if (adapter.ipv4 != DesiredIp())
        json["ipv4"] = ToJson(adapter.ipv4);
    if (adapter.ipv6 != DesiredIp())
        json["ipv6"] = ToJson(adapter.ipv6);
    if (adapter.routes)
        json["routes"] = ListOfRoutes(*adapter.routes);
    return json;
}

Json ToJson(const DesiredIdentity& identity)
{
    Json json = Json::object();
    Put(json, "computerName", identity.computerName);
    Put(json, "primaryDnsSuffix", identity.primaryDnsSuffix);
    Put(json, "workgroup", identity.workgroup);
    return json;
}

} // namespace

DesiredState ReadDesiredState(const Json& json, const std::string& place, std::vector<Fault>& faults)
{
    DesiredState state;
    std::optional<std::uint32_t> version;
    std::optional<std::vector<DesiredAdapter>> adapters;
    std::optional<DesiredIdentity> identity;
    ObjectReader reader(json, place, faults);
    reader.Take("schemaVersion", version, ReadNumber);
    reader.Take("adapters", adapters, ListOf(ReadAdapter));
    reader.Take("identity", identity, ReadIdentity);
    reader.Finish();
    if (version.value_or(SCHEMA_VERSION) != SCHEMA_VERSION)
        Refuse(faults, place + "/schemaVersion", "must be " + std::to_string(SCHEMA_VERSION));
    state.adapters = std::move(adapters).value_or(std::vector<DesiredAdapter>());
    state.identity = std::move(identity).value_or(DesiredIdentity());
    return state;
}

DesiredState ParseDesiredState(std::string_view text, std::vector<Fault>& faults)
{
    const auto json = ParseJson(text, faults);
    return json ? ReadDesiredState(*json, "", faults) : DesiredState();
}

Json ToJson(const DesiredState& state)
{
    Json json = {{"schemaVersion", SCHEMA_VERSION}, {"adapters", Json::array()}};
    for (const DesiredAdapter& adapter : state.adapters)
        json["adapters"].push_back(ToJson(adapter));
    if (state.identity != DesiredIdentity())
        json["identity"] = ToJson(state.identity);
    return json;
}

} // namespace zelk
