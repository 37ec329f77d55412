#include <state/plan/address_steps.h>

#include <algorithm>

#include <state/desired/standing.h>

namespace zelk
{
namespace
{

using Gateways = std::vector<Gateway>;
using Prefixes = std::vector<IpPrefix>;
using Texts = std::vector<std::string>;

std::string MaskOf(std::uint8_t length)
{
    const std::uint32_t mask = length == 0 ? 0 : ~std::uint32_t(0) << (32 - length);
    const IpAddress::Ipv4Bytes bytes = {static_cast<std::uint8_t>(mask >> 24), static_cast<std::uint8_t>(mask >> 16),
                                        static_cast<std::uint8_t>(mask >> 8), static_cast<std::uint8_t>(mask)};
    return IpAddress(bytes).ToText();
}

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
const Texts IPV6_GATEWAY = {"ipv6.gateways"};

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

GatewayChange CompareGateways(const Adapter& adapter, Family family, const Gateways& wanted)
{
    Gateways present = adapter.Of(family).configured.gateways.value_or(Gateways());
    for (const Gateway& gateway : StaticGatewaysInUse(adapter, family))
        if (Find(present, gateway.address) == nullptr)
            present.push_back(gateway);
    GatewayChange change;
    for (const Gateway& gateway : wanted)
    {
        if (GatewayStands(adapter, family, gateway))
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

/// Whether an address is there to stay, in use and configured.
bool AddressStands(const Adapter& adapter, const IpPrefix& address)
{
    const ConfiguredIp& configured = adapter.ipv4.configured;
    return configured.dhcp == false && configured.addresses && Has(*configured.addresses, address) &&
           (!IsUp(adapter) || Has(AddressesInUse(adapter, Family::IPV4), address));
}

class Ipv4Planner
{
public:
    Ipv4Planner(const Adapter& adapter, const DesiredIp& wanted, StepList& steps)
        : m_adapter(adapter), m_wanted(wanted), m_steps(steps)
    {
    }

    void Plan()
    {
        if (m_wanted.dhcp == true && !DhcpStands(m_adapter, true))
            BecomeClient();
        else if (m_wanted.addresses && !AddressesStand(m_adapter, Family::IPV4, *m_wanted.addresses))
            PlanAddresses(*m_wanted.addresses);
        else if (m_wanted.gateways && !GatewaysStand(m_adapter, Family::IPV4, *m_wanted.gateways))
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
        for (const Gateway& gateway : m_wanted.gateways.value_or(Gateways()))
            AddGateway(gateway);
    }

    void PlanAddresses(const Prefixes& wanted)
    {
        const Prefixes used = AddressesInUse(m_adapter, Family::IPV4);
        const Prefixes configured = ConfiguredAddresses(m_adapter, Family::IPV4).value_or(Prefixes());
        const bool isStatic = m_adapter.ipv4.configured.dhcp == false;
        const auto stands = [this](const IpPrefix& address) { return AddressStands(m_adapter, address); };
        if (wanted.empty())
            RemoveAll(used, configured, isStatic);
        else if (std::ranges::none_of(wanted, stands))
            Replace(wanted, used);
        else
            Change(wanted, used, configured, stands);
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
        for (const Gateway& gateway : m_adapter.ipv4.configured.gateways.value_or(Gateways()))
            if (m_wanted.gateways && m_wanted.gateways->empty())
                RemoveGateway(gateway.address);
        Join(used, configured);
        for (const IpPrefix& address : used)
            PlanRemoval(address.address, m_steps);
    }

    /// None stays: one command takes the first address with its gateway and drops all others.
    void Replace(const Prefixes& wanted, const Prefixes& used)
    {
        Gateways gateways = m_wanted.gateways.value_or(Gateways());
        const IpPrefix first = FirstOf(wanted, used, gateways);
        const auto gateway =
            std::ranges::find_if(gateways, [&](const Gateway& one) { return first.Contains(one.address); });
        SetStatic(first, gateway != gateways.end() ? &*gateway : nullptr);
        if (gateway != gateways.end())
            gateways.erase(gateway);
        for (const IpPrefix& address : wanted)
            if (address != first)
                AddAddress(address, gateways);
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
    template <class Stands>
    void Change(const Prefixes& wanted, const Prefixes& used, const Prefixes& configured, Stands stands)
    {
        Prefixes present = used;
        Join(present, configured);
        GatewayChange gateways;
        if (m_wanted.gateways)
            gateways = CompareGateways(m_adapter, Family::IPV4, *m_wanted.gateways);
        for (const IpPrefix& address : wanted)
        {
            if (stands(address))
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

    void PlanGateways(const Gateways& wanted) { PlanGateways(CompareGateways(m_adapter, Family::IPV4, wanted)); }

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
        Texts arguments = {"set", "address", Name(), "static", address.address.ToText(), MaskOf(address.length)};
        if (gateway != nullptr)
        {
            arguments.push_back(gateway->address.ToText());
            if (const std::string metric = MetricText(*gateway); !metric.empty())
                arguments.push_back(metric);
        }
        m_steps.Netsh(Family::IPV4,
                      "Sets the static address " + address.ToText() +
                          (gateway != nullptr ? " with the gateway " + gateway->address.ToText() : std::string()) +
                          " in place of all others",
                      std::move(arguments), IPV4_TOUCHES);
    }

    /// With one of the gateways that it reaches, which is then no longer to be added.
    void AddAddress(const IpPrefix& address, Gateways& gateways)
    {
        Texts arguments = {"add", "address", Name(), address.address.ToText(), MaskOf(address.length)};
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
    StepList& m_steps;
};

void RemoveIpv6(const IpAddress& address, StepList& steps)
{
    steps.Netsh(Family::IPV6, "Removes the address " + address.ToText(),
                {"delete", "address", steps.ConnectionName(), address.ToText()}, IPV6_TOUCHES);
}

void PlanIpv6Gateways(const Adapter& adapter, const Gateways& wanted, StepList& steps)
{
    const GatewayChange change = CompareGateways(adapter, Family::IPV6, wanted);
    for (const Gateway& gateway : change.added)
    {
        const bool known = Has(change.replaced, gateway.address);
        Texts arguments = {known ? "set" : "add", "route", "::/0", steps.ConnectionName(), gateway.address.ToText()};
        if (gateway.metric)
            arguments.push_back("metric=" + std::to_string(*gateway.metric));
        steps.Netsh(Family::IPV6, (known ? "Changes the gateway " : "Adds the gateway ") + gateway.address.ToText(),
                    std::move(arguments), IPV6_GATEWAY);
    }
    for (const IpAddress& gateway : change.removed)
        steps.Netsh(Family::IPV6, "Removes the gateway " + gateway.ToText(),
                    {"delete", "route", "::/0", steps.ConnectionName(), gateway.ToText()}, IPV6_GATEWAY);
}

} // namespace

void PlanRemoval(const IpAddress& address, StepList& steps)
{
    steps.Netsh(Family::IPV4, "Removes the address " + address.ToText(),
                {"delete", "address", steps.ConnectionName(), address.ToText()}, IPV4_TOUCHES);
}

bool ReplacesAddresses(const Adapter& adapter, const DesiredIp& wanted)
{
    if (wanted.dhcp == true)
        return !DhcpStands(adapter, true);
    return wanted.addresses && !AddressesStand(adapter, Family::IPV4, *wanted.addresses) &&
           std::ranges::none_of(*wanted.addresses, [&](const IpPrefix& one) { return AddressStands(adapter, one); });
}

void PlanIpv4(const Adapter& adapter, const DesiredIp& wanted, StepList& steps)
{
    Ipv4Planner(adapter, wanted, steps).Plan();
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
