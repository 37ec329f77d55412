// Machines of all kinds, put together as the input chooses: what is exported of one changes nothing of it, another one
// can be planned to become like it, and what that touches can be planned back.

#include <algorithm>
#include <array>

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/plan/restore.h>

#include "fuzz.h"

namespace
{

using namespace zelk;

/// The input, a choice a byte. When it ends, the first of everything is chosen.
class Choices
{
public:
    explicit Choices(std::string_view bytes) : m_bytes(bytes) {}

    std::size_t Below(std::size_t count)
    {
        if (m_bytes.empty())
            return 0;
        const std::size_t choice = static_cast<unsigned char>(m_bytes.front()) % count;
        m_bytes.remove_prefix(1);
        return choice;
    }
    template <class T>
    T Of(std::initializer_list<T> values)
    {
        return *(values.begin() + Below(values.size()));
    }
    /// One of the values, or another time none.
    template <class T>
    std::optional<T> Maybe(std::initializer_list<T> values)
    {
        const std::size_t choice = Below(values.size() + 1);
        return choice == 0 ? std::nullopt : std::optional<T>(*(values.begin() + choice - 1));
    }
    template <class T>
    std::vector<T> Some(const std::vector<T>& values)
    {
        std::vector<T> chosen;
        for (const std::size_t bits = Below(256); const T& value : values)
            if ((bits >> chosen.size() & 1) != 0 || Below(4) == 3)
                chosen.push_back(value);
        return chosen;
    }

private:
    std::string_view m_bytes;
};

template <class T>
std::vector<T> Parsed(std::initializer_list<const char*> texts)
{
    std::vector<T> values;
    for (const char* const text : texts)
        values.push_back(*T::Parse(text));
    return values;
}

const std::array ADDRESSES = {
    Parsed<IpPrefix>({"192.0.2.10/24", "192.0.2.20/24", "198.51.100.7/25", "169.254.1.2/16", "10.0.0.1/8"}),
    Parsed<IpPrefix>({"2001:db8::10/64", "2001:db8::20/128", "fe80::1/64", "2001:db8:1::5/48"})};
const std::array NEXT_HOPS = {Parsed<IpAddress>({"192.0.2.1", "198.51.100.1", "10.1.1.1", "0.0.0.0"}),
                              Parsed<IpAddress>({"2001:db8::1", "fe80::2", "2001:db8:1::1", "::"})};
const std::array DESTINATIONS = {Parsed<IpPrefix>({"203.0.113.0/24", "0.0.0.0/0", "10.2.0.0/16", "192.0.2.0/24"}),
                                 Parsed<IpPrefix>({"2001:db8:5::/48", "::/0", "2001:db8::/64", "ff00::/8"})};

std::vector<Gateway> MakeGateways(Choices& choices, std::size_t family)
{
    std::vector<Gateway> gateways;
    for (const IpAddress& address : choices.Some(NEXT_HOPS[family]))
        if (!address.IsUnspecified())
            gateways.push_back({address, choices.Maybe({1U, 5U})});
    return gateways;
}

void Configure(Choices& choices, std::size_t family, ConfiguredIp& ip)
{
    ip.dhcp = choices.Maybe({false, true});
    if (choices.Below(8) != 7)
        ip.addresses = choices.Some(ADDRESSES[family]);
    if (choices.Below(8) != 7)
        ip.gateways = MakeGateways(choices, family);
    if (const auto servers = choices.Some(NEXT_HOPS[family]); !servers.empty())
        ip.dnsServers = servers;
    else
        ip.dnsServers = choices.Maybe<AutomaticOr<std::vector<IpAddress>>>({Automatic()});
    ip.dnsSuffix = choices.Maybe<std::string>({"", "example.com"});
    ip.metric = choices.Maybe<AutomaticOr<std::uint32_t>>({Automatic(), 10U});
    ip.mtu = choices.Maybe<AutomaticOr<std::uint32_t>>({Automatic(), 1400U});
    ip.netbios = choices.Maybe({NetbiosSetting::DHCP, NetbiosSetting::ENABLED, NetbiosSetting::DISABLED});
}

/// What is in use, mostly what is configured.
void Use(Choices& choices, std::size_t family, IpSettings& ip)
{
    ip.enabled = choices.Of<std::optional<bool>>({true, false, std::nullopt});
    ip.dhcp = choices.Of({ip.configured.dhcp, std::optional<bool>(true), std::optional<bool>()});
    ip.addresses.emplace();
    for (const IpPrefix& address :
         choices.Below(4) == 3 ? ADDRESSES[family] : ip.configured.addresses.value_or(ADDRESSES[family]))
        ip.addresses->push_back(
            {address.address, choices.Of<std::optional<std::uint8_t>>({address.length, 16, std::nullopt}),
             choices.Of<std::optional<AddressOrigin>>({AddressOrigin::MANUAL, AddressOrigin::DHCP,
                                                       AddressOrigin::ROUTER, AddressOrigin::LINK_LAYER, std::nullopt}),
             DadState::PREFERRED, Lifetime(), Lifetime()});
    ip.gateways = choices.Of({ip.configured.gateways, std::optional(MakeGateways(choices, family)), {}});
    ip.dnsServers = choices.Some(NEXT_HOPS[family]);
    ip.dnsSuffix = choices.Of({ip.configured.dnsSuffix, std::optional<std::string>("other.example"), {}});
    ip.metric = choices.Maybe({10U, 25U});
    ip.automaticMetric = choices.Maybe({true, false});
    ip.mtu = choices.Maybe({1400U, 1500U});
    ip.netbios = choices.Maybe({true, false});
    if (choices.Below(8) == 7)
        ip.addresses.reset();
    if (family == 1) // concluded from what is in use
    {
        if (!ip.configured.addresses || !ip.addresses)
            ip.configured.addresses = std::nullopt, ip.addresses = std::nullopt;
        if (!ip.configured.gateways || !ip.gateways)
            ip.configured.gateways = std::nullopt, ip.gateways = std::nullopt;
    }
}

std::vector<Route> MakeRoutes(Choices& choices)
{
    std::vector<Route> routes;
    for (std::size_t family = 0; family < 2; ++family)
        for (const IpPrefix& destination : choices.Some(DESTINATIONS[family]))
            routes.push_back({destination, NEXT_HOPS[family][choices.Below(4)], choices.Maybe({1U, 20U}),
                              choices.Of({RouteStore::ACTIVE, RouteStore::PERSISTENT, RouteStore::BOTH}),
                              choices.Maybe({RouteOrigin::MANUAL, RouteOrigin::DHCP, RouteOrigin::ROUTER}),
                              choices.Maybe({RouteProtocol::MANAGEMENT, RouteProtocol::LOCAL, RouteProtocol::ICMP})});
    return routes;
}

void Vary(Choices& choices, Adapter& adapter)
{
    for (const Family family : FAMILIES)
    {
        const std::size_t index = family == Family::IPV4 ? 0 : 1;
        Configure(choices, index, adapter.Of(family).configured);
        Use(choices, index, adapter.Of(family));
    }
    if (choices.Below(8) != 7)
        adapter.routes = MakeRoutes(choices);
    adapter.status = choices.Of({AdapterStatus::UP, AdapterStatus::UNPLUGGED, AdapterStatus::DISABLED,
                                 AdapterStatus::NOT_PRESENT, AdapterStatus::FAILED});
    adapter.enabled = choices.Of<std::optional<bool>>({true, false, std::nullopt});
    adapter.driver.hardwareAddress =
        choices.Maybe({*HardwareAddress::Parse("02005E100009"), *HardwareAddress::Parse("010000000000")});
    adapter.connectionName = choices.Of({adapter.connectionName, std::optional<std::string>("lan9"), {}});
    switch (choices.Below(16))
    {
    case 15: adapter.guid.reset(); break;
    case 14: adapter.index.reset(); break;
    case 13: adapter.ipv6Index.reset(); break;
    case 12: adapter.deviceInstance.reset(); break;
    case 11: adapter.hidden = true; break;
    case 10: adapter.hardwareAddress.reset(); break;
    case 9: adapter.type = AdapterType::LOOPBACK; break;
    case 8: adapter.ipv4.mtu = 70000; break;
    case 7: adapter.ipv4.mtu = 1400, adapter.ipv4.configured.mtu = 1400U; break;
    case 6:
        adapter.ipv4.dnsServers = std::vector(2, NEXT_HOPS[0][0]),
        adapter.ipv4.configured.dnsServers = std::vector(1, NEXT_HOPS[0][0]);
        break;
    case 5:
        adapter.ipv6.addresses.emplace(1, Address{*IpAddress::Parse("::1"), 128, AddressOrigin::DHCP, {}, {}, {}});
        break;
    case 4:
        adapter.routes.emplace();
        for (const char* const odd : {"127.0.0.0/8", "10.2.3.4/16"})
            adapter.routes->push_back({*IpPrefix::Parse(odd), NEXT_HOPS[0][0], 1U, RouteStore::BOTH,
                                       RouteOrigin::MANUAL, RouteProtocol::MANAGEMENT});
        break;
    default: break;
    }
}

Machine MakeMachine(Choices& choices)
{
    Machine machine = fuzz::SmallMachine();
    machine.environment.backEnd = choices.Of({BackEnd::VISTA, BackEnd::PRE_VISTA});
    machine.environment.protocolBinding = choices.Below(2) == 1;
    machine.identity.membership = choices.Maybe({Membership::WORKGROUP, Membership::DOMAIN_MEMBER});
    machine.identity.workgroup = choices.Maybe<std::string>({"GROUP", "a\"b"});
    machine.identity.configured.computerName = choices.Maybe<std::string>({"host", "-", "other"});
    machine.identity.configured.primaryDnsSuffix = choices.Maybe<std::string>({"", "example.com", ".."});
    machine.identity.computerName = choices.Maybe<std::string>({"host", "old"});
    for (Adapter& adapter : machine.adapters)
        Vary(choices, adapter);
    return machine;
}

void CheckExport(const Machine& machine, const DesiredState& exported)
{
    std::vector<Fault> faults;
    fuzz::Require(ParseDesiredState(ToJson(exported).dump(), faults) == exported && faults.empty());
    const Plan plan = MakePlan(machine, exported, faults);
    fuzz::Require(faults.empty() && plan.differences.empty());
}

/// The setting, or the adapter, that a fault is about.
Json::json_pointer PlaceOfSetting(const Fault& fault)
{
    Json::json_pointer place(fault.place);
    const auto depth = [&] { return std::ranges::count(place.to_string(), '/'); };
    const bool ofFamily = fault.place.find("/ipv") != std::string::npos;
    while (depth() > (ofFamily ? 4 : 3))
        place.pop_back();
    if (place.back() == "adapter")
        place.pop_back();
    return place;
}

/// What is refused is left out, so that the rest is planned.
Plan MakePlanOfRest(const Machine& machine, Json desired)
{
    for (;;)
    {
        std::vector<Fault> faults;
        const DesiredState state = ParseDesiredState(desired.dump(), faults);
        Plan plan = MakePlan(machine, state, faults);
        if (faults.empty())
            return plan;
        const Json::json_pointer place = PlaceOfSetting(faults.front());
        fuzz::Require(desired.contains(place));
        Json& parent = desired.at(place.parent_pointer());
        if (parent.is_array())
            parent.erase(std::stoul(place.back()));
        else
            parent.erase(place.back());
    }
}

} // namespace

void fuzz::Try(std::string_view text)
{
    Choices choices(text);
    const Machine machine = MakeMachine(choices);
    CheckExport(machine, ExportState(machine, ExportedAdapters(machine), true).state);

    const Machine other = MakeMachine(choices);
    const Plan plan = MakePlanOfRest(machine, ToJson(ExportState(other, ExportedAdapters(other), true).state));
    CheckPlan(plan);
    std::vector<Fault> faults;
    CheckPlan(MakePlan(other, RestoredTargets(machine, plan.steps), RestoredIdentity(machine, plan.steps), faults));
    for (const Difference& difference : UnknownBefore(machine, plan.steps))
        Require(!difference.path.empty());
}
