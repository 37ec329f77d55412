#include <state/plan/address_steps.h>

#include <algorithm>
#include <utility>

#include <state/desired/standing.h>
#include <state/plan/route_command.h>

namespace zelk
{
namespace
{

using Gateways = std::vector<Gateway>;
using Prefixes = std::vector<IpPrefix>;
using Texts = std::vector<std::string>;

template <class List>
bool HasIp(const List& list, const IpAddress& address)
{
    return std::ranges::any_of(list, [&](const auto& element) { return element.address == address; });
}

void Join(Prefixes& list, const Prefixes& more)
{
    for (const IpPrefix& prefix : more)
        if (!Has(list, prefix))
            list.push_back(prefix);
}

/// What a command about addresses can change beside them: routes go with their addresses.
const Texts IPV4_TOUCHES = {"ipv4.dhcp", "ipv4.addresses", "ipv4.gateways", "ipv4.dnsServers", "routes"};
const Texts IPV4_GATEWAY = {"ipv4.gateways"};
const Texts IPV6_TOUCHES = {"ipv6.addresses", "ipv6.gateways", "routes"};

/// Gateways that are to be added and to be removed. One whose metric is another is both.
struct GatewayChange
{
    Gateways added;
    std::vector<IpAddress> replaced; ///< removed before it is added again
    std::vector<IpAddress> removed;
};

const Gateway* Find(const Gateways& gateways, const IpAddress& address)
{
    const auto found = std::ranges::find(gateways, address, &Gateway::address);
    return found != gateways.end() ? &*found : nullptr;
}

bool HasGateway(const std::optional<Gateways>& gateways, const Gateway& wanted)
{
    const Gateway* const found = gateways ? Find(*gateways, wanted.address) : nullptr;
    return found != nullptr && (!wanted.metric || found->metric == wanted.metric);
}

/// Whether a gateway is there to stay, in use and, where that is known apart, configured.
bool GatewayStands(const Adapter& adapter, Family family, const Gateway& wanted)
{
    const IpSettings& settings = adapter.Of(family);
    const bool configured = family == Family::IPV6 || HasGateway(settings.configured.gateways, wanted);
    return configured && (!IsUp(adapter) || HasGateway(settings.gateways, wanted));
}

/// How many elements of a list, from the first on, are present in this order: the others can only be put behind them.
template <class T>
std::size_t CountInOrder(const std::vector<T>& wanted, const std::vector<T>& present)
{
    for (std::size_t count = wanted.size(); count > 0; --count)
    {
        const std::vector<T> first(wanted.begin(), wanted.begin() + static_cast<std::ptrdiff_t>(count));
        std::vector<T> kept = present;
        std::erase_if(kept, [&](const T& one) { return !Has(first, one); });
        if (kept == first)
            return count;
    }
    return 0;
}

std::vector<IpAddress> AddressesOf(const Gateways& gateways)
{
    std::vector<IpAddress> addresses;
    for (const Gateway& gateway : gateways)
        addresses.push_back(gateway.address);
    return addresses;
}

GatewayChange CompareGateways(const Adapter& adapter, Family family, const Gateways& wanted, bool exact)
{
    Gateways present = adapter.Of(family).configured.gateways.value_or(Gateways());
    const std::size_t inOrder = CountInOrder(AddressesOf(wanted), AddressesOf(present));
    for (const Gateway& gateway : StaticGatewaysInUse(adapter, family))
        if (Find(present, gateway.address) == nullptr)
            present.push_back(gateway);
    GatewayChange change;
    for (const Gateway& gateway : wanted)
    {
        const bool ordered = !exact || (change.added.empty() && std::cmp_less(&gateway - wanted.data(), inOrder) &&
                                        Find(present, gateway.address)->metric == gateway.metric);
        if (ordered && GatewayStands(adapter, family, gateway))
            continue;
        change.added.push_back(gateway);
        if (Find(present, gateway.address) != nullptr)
            change.replaced.push_back(gateway.address);
    }
    for (const Gateway& gateway : present)
        if (Find(wanted, gateway.address) == nullptr)
            change.removed.push_back(gateway.address);
    return change;
}

/// Those of the wanted addresses that can stay as they are, configured and in use.
Prefixes StandingAddresses(const Adapter& adapter, const Prefixes& wanted, bool exact)
{
    const ConfiguredIp& configured = adapter.ipv4.configured;
    if (configured.dhcp != false)
        return {};
    const Prefixes used = AddressesInUse(adapter, Family::IPV4);
    Prefixes standing = configured.addresses.value_or(Prefixes());
    std::erase_if(standing,
                  [&](const IpPrefix& one) { return !Has(wanted, one) || (IsUp(adapter) && !Has(used, one)); });
    if (!exact)
        return standing;
    const std::size_t count = CountInOrder(wanted, standing);
    return {wanted.begin(), wanted.begin() + static_cast<std::ptrdiff_t>(count)};
}

class Ipv4Planner
{
public:
    Ipv4Planner(const Adapter& adapter, const DesiredIp& wanted, bool exact, StepList& steps)
        : m_adapter(adapter), m_wanted(wanted), m_exact(exact), m_steps(steps)
    {
    }

    void Plan()
    {
        const bool asStored = !m_exact || IsConfiguredExactly(m_adapter, m_wanted);
        if (m_wanted.dhcp == true && !DhcpStands(m_adapter, true))
            BecomeClient();
        else if (m_wanted.addresses && (!asStored || !AddressesStand(m_adapter, Family::IPV4, *m_wanted.addresses)))
            PlanAddresses(*m_wanted.addresses);
        else if (m_wanted.gateways && (!asStored || !GatewaysStand(m_adapter, Family::IPV4, *m_wanted.gateways)))
            PlanGateways(*m_wanted.gateways);
    }

private:
    void BecomeClient()
    {
        if (m_wanted.gateways) // the command may leave them or not: neither is documented
            for (const Gateway& gateway : m_adapter.ipv4.configured.gateways.value_or(Gateways()))
                RemoveGateway(gateway.address);
        m_steps.Netsh(Family::IPV4, "Makes the adapter a DHCP client", {"set", "address", Name(), "dhcp"},
                      IPV4_TOUCHES);
        // Their routes come when it is known which ones the DHCP server gives.
        if (m_wanted.gateways && !m_wanted.gateways->empty())
            StoreGateways(*m_wanted.gateways);
    }

    void PlanGateways(const Gateways& wanted)
    {
        const GatewayChange change = CompareGateways(m_adapter, Family::IPV4, wanted, m_exact);
        if (DhcpStands(m_adapter, true) || (!m_steps.IsBeforeVista() && IsOfMetricsOnly(change)))
            PlanRoutesAndStore(wanted);
        else
            PlanGateways(change);
    }

    /// Whether all gateways are there and stay, so that no command has to take one away.
    [[nodiscard]] bool IsOfMetricsOnly(const GatewayChange& change) const
    {
        return change.removed.empty() && std::ranges::all_of(change.added, [&](const Gateway& gateway) {
                   const auto& configured = m_adapter.ipv4.configured.gateways;
                   return gateway.metric && configured && HasIp(*configured, gateway.address);
               });
    }

    /// netsh takes gateways for adapters with static addresses only, and none with another metric than it has.
    void PlanRoutesAndStore(const Gateways& wanted)
    {
        const Gateways used = m_adapter.ipv4.gateways.value_or(Gateways());
        const auto& lease = m_adapter.ipv4.lease;
        const auto leased = lease ? lease->gateways.value_or(std::vector<IpAddress>()) : std::vector<IpAddress>();
        const GatewayChange change = CompareGateways(m_adapter, Family::IPV4, wanted, false);
        for (const Gateway& gateway : IsUp(m_adapter) ? change.added : Gateways())
            if (!HasIp(used, gateway.address))
                PlanRouteCommand(RouteVerb::ADD, DefaultRoute(gateway), m_steps);
            else if (!HasGateway(used, gateway))
                PlanRouteCommand(RouteVerb::CHANGE, DefaultRoute(gateway), m_steps);
        StoreGateways(wanted);
        for (const IpAddress& gateway : change.removed)
            if (HasIp(used, gateway) && !Has(leased, gateway))
                PlanRouteCommand(RouteVerb::REMOVE, DefaultRoute({gateway, std::nullopt}), m_steps);
    }

    void StoreGateways(const Gateways& gateways)
    {
        m_steps.Add(gateways.empty() ? "Removes the stored gateways" : "Stores the gateways", StoredSetting{gateways},
                    IPV4_GATEWAY);
    }

    void PlanAddresses(const Prefixes& wanted)
    {
        const Prefixes used = AddressesInUse(m_adapter, Family::IPV4);
        const Prefixes configured = ConfiguredAddresses(m_adapter, Family::IPV4).value_or(Prefixes());
        const bool isStatic = m_adapter.ipv4.configured.dhcp == false;
        const Prefixes standing = StandingAddresses(m_adapter, wanted, m_exact);
        if (wanted.empty())
            RemoveAll(used, configured, isStatic);
        else if (standing.empty())
            Replace(wanted, used);
        else
            Change(wanted, used, configured, standing);
    }

    /// Static without an address: there is no command for it but to remove the last one.
    void RemoveAll(Prefixes used, const Prefixes& configured, bool isStatic)
    {
        if (!isStatic)
        {
            const IpAddress::Ipv4Bytes linkLocal = {169, 254, 254, 254};
            const IpPrefix address = used.empty() ? IpPrefix{IpAddress(linkLocal), 16} : used.front();
            SetStatic(address, nullptr);
            return PlanRemoval(address.address, m_steps);
        }
        if (m_wanted.gateways == Gateways())
            for (const Gateway& gateway : m_adapter.ipv4.configured.gateways.value_or(Gateways()))
                RemoveGateway(gateway.address);
        Join(used, configured);
        for (const IpPrefix& address : used)
            PlanRemoval(address.address, m_steps);
    }

    /// None stays: one command takes the first address with its gateway and drops all others.
    void Replace(const Prefixes& wanted, const Prefixes& used)
    {
        Gateways gateways = m_wanted.gateways.value_or(Gateways());
        const IpPrefix first = m_exact ? wanted.front() : FirstOf(wanted, used, gateways);
        auto gateway = std::ranges::find_if(gateways, [&](const Gateway& one) { return first.Contains(one.address); });
        if (m_exact && gateway != gateways.begin())
            gateway = gateways.end();
        SetStatic(first, gateway != gateways.end() ? &*gateway : nullptr);
        if (gateway != gateways.end())
            gateways.erase(gateway);
        Gateways none;
        for (const IpPrefix& address : wanted)
            if (address != first)
                AddAddress(address, m_exact ? none : gateways);
        for (const Gateway& one : gateways)
            AddGateway(one);
    }

    /// Preferably one in use, so that its connections live on, or one that reaches a gateway.
    static IpPrefix FirstOf(const Prefixes& wanted, const Prefixes& used, const Gateways& gateways)
    {
        const auto reaches = [&](const IpPrefix& address) {
            return std::ranges::any_of(gateways, [&](const Gateway& one) { return address.Contains(one.address); });
        };
        for (const IpPrefix& address : wanted)
            if (Has(used, address) && reaches(address))
                return address;
        const auto found = std::ranges::find_if(wanted, reaches);
        return found != wanted.end() ? *found : wanted.front();
    }

    /// Some stay: what is new comes before what is old goes.
    void Change(const Prefixes& wanted, const Prefixes& used, const Prefixes& configured, const Prefixes& standing)
    {
        Prefixes present = used;
        Join(present, configured);
        GatewayChange gateways;
        if (m_wanted.gateways)
            gateways = CompareGateways(m_adapter, Family::IPV4, *m_wanted.gateways, m_exact);
        for (const IpPrefix& address : wanted)
        {
            if (Has(standing, address))
                continue;
            if (HasIp(present, address.address)) // with another prefix, or only in one of both places
                PlanRemoval(address.address, m_steps);
            Gateways none;
            AddAddress(address, gateways.replaced.empty() ? gateways.added : none);
        }
        PlanGateways(gateways);
        std::vector<IpAddress> removed;
        for (const IpPrefix& address : present)
            if (!HasIp(wanted, address.address) && !Has(removed, address.address))
            {
                removed.push_back(address.address);
                PlanRemoval(address.address, m_steps);
            }
    }

    void PlanGateways(const GatewayChange& change)
    {
        for (const Gateway& gateway : change.added)
        {
            if (Has(change.replaced, gateway.address))
                RemoveGateway(gateway.address);
            AddGateway(gateway);
        }
        for (const IpAddress& gateway : change.removed)
            RemoveGateway(gateway);
    }

    void SetStatic(const IpPrefix& address, const Gateway* gateway)
    {
        Texts arguments = {
            "set", "address", Name(), "static", address.address.ToText(), MaskOf(address.length).ToText()};
        if (gateway != nullptr)
        {
            arguments.push_back(gateway->address.ToText());
            if (const std::string metric = MetricText(*gateway); !metric.empty())
                arguments.push_back(metric);
        }
        else if (m_steps.IsBeforeVista()) // where the old ones stay otherwise
            arguments.emplace_back("none");
        m_steps.Netsh(Family::IPV4,
                      "Sets the static address " + address.ToText() +
                          (gateway != nullptr ? " with the gateway " + gateway->address.ToText() : std::string()) +
                          " in place of all others",
                      std::move(arguments), IPV4_TOUCHES);
    }

    /// With one of the gateways that it reaches, which is then no longer to be added.
    void AddAddress(const IpPrefix& address, Gateways& gateways)
    {
        Texts arguments = {"add", "address", Name(), address.address.ToText(), MaskOf(address.length).ToText()};
        std::string text = "Adds the address " + address.ToText();
        const auto gateway =
            std::ranges::find_if(gateways, [&](const Gateway& one) { return address.Contains(one.address); });
        if (gateway != gateways.end())
        {
            text += " with the gateway " + gateway->address.ToText();
            AppendGateway(arguments, *gateway);
            gateways.erase(gateway);
        }
        m_steps.Netsh(Family::IPV4, std::move(text), std::move(arguments), IPV4_TOUCHES);
    }

    void AddGateway(const Gateway& gateway)
    {
        Texts arguments = {"add", "address", Name()};
        AppendGateway(arguments, gateway);
        m_steps.Netsh(Family::IPV4, "Adds the gateway " + gateway.address.ToText(), std::move(arguments), IPV4_GATEWAY);
    }

    void RemoveGateway(const IpAddress& gateway)
    {
        m_steps.Netsh(Family::IPV4, "Removes the gateway " + gateway.ToText(),
                      {"delete", "address", Name(), "gateway=" + gateway.ToText()}, IPV4_GATEWAY);
    }

    void AppendGateway(Texts& arguments, const Gateway& gateway) const
    {
        arguments.push_back("gateway=" + gateway.address.ToText());
        if (const std::string metric = MetricText(gateway); !metric.empty())
            arguments.push_back("gwmetric=" + metric);
    }

    /// Before Vista a gateway needs one.
    [[nodiscard]] std::string MetricText(const Gateway& gateway) const
    {
        if (gateway.metric)
            return std::to_string(*gateway.metric);
        return m_steps.IsBeforeVista() ? "1" : "";
    }

    [[nodiscard]] std::string Name() const { return m_steps.ConnectionName(); }

    const Adapter& m_adapter;
    const DesiredIp& m_wanted;
    bool m_exact;
    StepList& m_steps;
};

void RemoveIpv6(const IpAddress& address, StepList& steps)
{
    steps.Netsh(Family::IPV6, "Removes the address " + address.ToText(),
                {"delete", "address", steps.ConnectionName(), address.ToText()}, IPV6_TOUCHES);
}

void PlanIpv6Gateways(const Adapter& adapter, const Gateways& wanted, StepList& steps)
{
    const GatewayChange change = CompareGateways(adapter, Family::IPV6, wanted, false);
    for (const Gateway& gateway : change.added)
        PlanRouteCommand(Has(change.replaced, gateway.address) ? RouteVerb::CHANGE : RouteVerb::ADD,
                         DefaultRoute(gateway), steps);
    for (const IpAddress& gateway : change.removed)
        PlanRouteCommand(RouteVerb::REMOVE, DefaultRoute({gateway, std::nullopt}), steps);
}

} // namespace

void PlanRemoval(const IpAddress& address, StepList& steps)
{
    steps.Netsh(Family::IPV4, "Removes the address " + address.ToText(),
                {"delete", "address", steps.ConnectionName(), address.ToText()}, IPV4_TOUCHES);
}

bool ReplacesAddresses(const Adapter& adapter, const DesiredIp& wanted, bool exact)
{
    if (wanted.dhcp == true)
        return !DhcpStands(adapter, true);
    return wanted.addresses && !AddressesStand(adapter, Family::IPV4, *wanted.addresses) &&
           StandingAddresses(adapter, *wanted.addresses, exact).empty();
}

void PlanIpv4(const Adapter& adapter, const DesiredIp& wanted, bool exact, StepList& steps)
{
    Ipv4Planner(adapter, wanted, exact, steps).Plan();
}

void PlanIpv6(const Adapter& adapter, const DesiredIp& wanted, StepList& steps)
{
    const Prefixes used = AddressesInUse(adapter, Family::IPV6);
    const Prefixes configured = ConfiguredAddresses(adapter, Family::IPV6).value_or(Prefixes());
    const bool changes = wanted.addresses && !AddressesStand(adapter, Family::IPV6, *wanted.addresses);
    for (const IpPrefix& address : changes ? *wanted.addresses : Prefixes())
    {
        if (Has(used, address))
            continue;
        if (HasIp(used, address.address)) // with another prefix
            RemoveIpv6(address.address, steps);
        steps.Netsh(Family::IPV6, "Adds the address " + address.ToText(),
                    {"add", "address", steps.ConnectionName(), address.ToText()}, IPV6_TOUCHES);
    }
    if (wanted.gateways && !GatewaysStand(adapter, Family::IPV6, *wanted.gateways))
        PlanIpv6Gateways(adapter, *wanted.gateways, steps);
    for (const IpPrefix& address : changes ? configured : Prefixes())
        if (!HasIp(*wanted.addresses, address.address))
            RemoveIpv6(address.address, steps);
}

} // namespace zelk
