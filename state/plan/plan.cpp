#include <state/plan/plan.h>

#include <algorithm>

#include <state/desired/checks.h>
#include <state/desired/machine_names.h>
#include <state/desired/object_reader.h>
#include <state/desired/standing.h>
#include <state/fields/json_value.h>
#include <state/plan/address_steps.h>
#include <state/plan/setting_steps.h>
#include <state/plan/target.h>

namespace zelk
{
namespace
{

/// What can be set of an adapter only while it runs.
bool IsOfRunningAdapter(const Difference& difference)
{
    return difference.path.starts_with("ipv") || difference.path == "routes";
}

/// Refuses, by name, what this system or this adapter cannot do.
class Feasibility
{
public:
    Feasibility(const Machine& machine, const Target& target, const Adapter& adapter, std::vector<Fault>& faults)
        : m_machine(machine), m_target(target), m_adapter(adapter), m_faults(faults)
    {
    }

    void Check()
    {
        bool running = false;
        for (const Difference& difference : Differences(m_machine, {m_target}, {}))
        {
            CheckDifference(difference);
            running = running || IsOfRunningAdapter(difference);
        }
        if (running)
            CheckRunning();
    }

private:
    void Refuse(const std::string& path, std::string text)
    {
        std::string place = '/' + path;
        std::ranges::replace(place, '.', '/');
        m_faults.push_back({FaultKind::SYSTEM, m_target.place + (path.empty() ? "" : place), std::move(text)});
    }

    void CheckDifference(const Difference& difference)
    {
        const bool old = m_machine.environment.backEnd == BackEnd::PRE_VISTA;
        const bool ofInterface = difference.path.ends_with(".metric") || difference.path.ends_with(".mtu");
        if (difference.path == "ipv6.enabled" && !old && !m_machine.environment.protocolBinding)
            Refuse(difference.path,
                   "cannot be set: this system has no protocols that can be bound to adapters (INetCfg)");
        else if (old && (difference.path.starts_with("ipv6.") || ofInterface))
            Refuse(difference.path, "cannot be set on a system before Windows Vista");
        else if ((difference.path == "enabled" && !m_adapter.deviceInstance) ||
                 (difference.path == "hardwareAddress" && (!m_adapter.deviceInstance || !m_adapter.classKey)))
            Refuse(difference.path, "cannot be set: the device of the adapter is not known");
    }

    [[nodiscard]] bool IsRunning() const
    {
        return m_adapter.index && m_adapter.status != AdapterStatus::NOT_PRESENT &&
               m_adapter.status != AdapterStatus::DISABLED && m_adapter.status != AdapterStatus::FAILED;
    }

    void CheckRunning()
    {
        if (!IsRunning() && m_target.desired.enabled != true)
            Refuse("", "the adapter \"" + m_target.name +
                           "\" does not run, so its addresses, servers and routes cannot " +
                           "be set; enable it in the same state with \"enabled\": true");
        if (const std::string reason = RefuseInCommands(m_adapter.connectionName.value_or("")); !reason.empty())
            Refuse("", reason);
    }

    const Machine& m_machine;
    const Target& m_target;
    const Adapter& m_adapter;
    std::vector<Fault>& m_faults;
};

/// Plans the steps of all adapters, on a copy of the machine that follows what is planned across adapters. One that has
/// gone gets no steps; its differences say so.
class Planner
{
public:
    Planner(const Machine& machine, const std::vector<Target>& targets, std::vector<Step>& steps) : m_machine(machine)
    {
        for (const Target& target : targets)
            if (const auto found = std::ranges::find(m_machine.adapters, target.guid, &Adapter::guid);
                found != m_machine.adapters.end())
                m_items.push_back({target, target.desired, *found, {*found, m_machine.environment, steps}});
    }

    void Plan()
    {
        for (Item& item : m_items)
            StartDevice(item);
        for (Item& item : m_items)
            Bind(item, true);
        for (Item& item : m_items)
            RemoveRoutes(item);
        for (Item& item : m_items)
            GiveUpAddresses(item);
        for (Item* item : InOrder())
            PlanAdapter(*item);
        for (Item& item : m_items)
            FinishDevice(item);
    }

private:
    struct Item
    {
        const Target& target;
        const DesiredAdapter& desired;
        Adapter& adapter; ///< of the copy
        StepList steps;
        bool flushed = false; ///< its addresses are replaced
    };

    static void StartDevice(Item& item)
    {
        const auto& wanted = item.desired.hardwareAddress;
        if (item.desired.enabled == true && item.adapter.enabled != true)
            Start(item, "Enables the adapter", {LibraryOperation::ENABLE_ADAPTER, ""}, "enabled");
        if (!wanted || HardwareAddressStands(item.adapter, *wanted))
            return;
        const auto* const address = std::get_if<HardwareAddress>(&*wanted);
        const std::string text = address != nullptr ? address->ToText() : "";
        Start(item,
              (text.empty() ? "Leaves the hardware address to the driver" : "Sets the hardware address " + text) +
                  " and restarts the adapter",
              {LibraryOperation::SET_HARDWARE_ADDRESS, text}, "hardwareAddress");
    }

    static void Start(Item& item, std::string text, LibraryCall call, const char* path)
    {
        item.steps.Add(std::move(text), std::move(call), {path});
        item.steps.ForgetIndex();
    }

    static void Bind(Item& item, bool wanted)
    {
        if (item.desired.ipv6.enabled == wanted && item.adapter.ipv6.enabled != wanted)
            item.steps.Add(wanted ? "Binds IPv6 to the adapter" : "Unbinds IPv6 from the adapter", Ipv6Binding{wanted},
                           {"ipv6.enabled"});
    }

    static void FinishDevice(Item& item)
    {
        const auto& name = item.desired.connectionName;
        if (name && item.adapter.connectionName != name)
            item.steps.Add(
                "Renames the connection to \"" + *name + '"',
                Command{Program::NETSH,
                        {"interface", "set", "interface", "name=" + item.steps.ConnectionName(), "newname=" + *name}},
                {"connectionName"});
        if (item.desired.enabled == false && item.adapter.enabled != false)
            item.steps.Add("Disables the adapter", LibraryCall{LibraryOperation::DISABLE_ADAPTER, ""}, {"enabled"});
    }

    static void RemoveRoutes(Item& item)
    {
        item.flushed = ReplacesAddresses(item.adapter, item.desired.ipv4, item.target.exact);
        if (item.desired.routes)
            PlanRouteRemovals(item.adapter, *item.desired.routes, item.flushed, item.steps);
    }

    /// Whether the adapter is to get an address that it does not have now.
    static bool Gains(const Item& item, const IpAddress& address)
    {
        const auto& wanted = item.desired.Of(address.GetFamily()).addresses;
        const auto same = [&](const IpPrefix& prefix) { return prefix.address == address; };
        return wanted && std::ranges::any_of(*wanted, same) &&
               std::ranges::none_of(AddressesInUse(item.adapter, address.GetFamily()), same);
    }

    [[nodiscard]] bool IsGainedByAnother(const Item& item, const IpAddress& address) const
    {
        return std::ranges::any_of(m_items,
                                   [&](const Item& other) { return &other != &item && Gains(other, address); });
    }

    /// An address that moves to another adapter has to go before it comes.
    void GiveUpAddresses(Item& item)
    {
        IpSettings& ip = item.adapter.ipv4;
        const auto& wanted = item.desired.ipv4.addresses;
        if (!wanted || ip.configured.dhcp != false)
            return;
        for (const IpPrefix& address : AddressesInUse(item.adapter, Family::IPV4))
        {
            const auto same = [&](const auto& one) { return one.address == address.address; };
            if (std::ranges::any_of(*wanted, same) || !IsGainedByAnother(item, address.address))
                continue;
            PlanRemoval(address.address, item.steps);
            std::erase_if(*ip.addresses, same);
            if (ip.configured.addresses)
                std::erase_if(*ip.configured.addresses, same);
        }
    }

    /// Those that give something up that another one gets come first.
    [[nodiscard]] std::vector<Item*> InOrder()
    {
        std::vector<Item*> items;
        for (Item& item : m_items)
            items.push_back(&item);
        std::ranges::stable_partition(items, [&](const Item* item) {
            return std::ranges::any_of(FAMILIES, [&](Family family) {
                return std::ranges::any_of(AddressesInUse(item->adapter, family), [&](const IpPrefix& address) {
                    return IsGainedByAnother(*item, address.address);
                });
            });
        });
        return items;
    }

    void PlanAdapter(Item& item)
    {
        auto& [target, desired, adapter, steps, flushed] = item;
        PlanIpv4(adapter, desired.ipv4, target.exact, steps);
        PlanIpv6(adapter, desired.ipv6, steps);
        if (desired.routes)
            PlanRouteAdditions(adapter, *desired.routes, flushed, steps);
        for (const Family family : FAMILIES)
        {
            const DesiredIp& ip = desired.Of(family);
            if (ip.dnsServers)
                PlanDnsServers(m_machine, adapter, family, desired, steps);
            PlanInterface(adapter, family, ip, steps);
        }
        PlanStored(adapter, desired.ipv4, steps);
        Bind(item, false);
    }

    Machine m_machine;
    std::vector<Item> m_items;
};

void PlanIdentity(const Identity& now, const DesiredIdentity& wanted, std::vector<Step>& steps)
{
    const auto plan = [&](const std::optional<std::string>& name, const std::optional<std::string>& present,
                          const char* what, LibraryOperation operation, const char* path) {
        if (name && name != present)
            steps.push_back(
                {"",
                 std::nullopt,
                 name->empty() ? std::string("Removes the ") + what : std::string("Sets the ") + what + ' ' + *name,
                 LibraryCall{operation, *name},
                 {path}});
    };
    plan(wanted.computerName, now.configured.computerName, "computer name", LibraryOperation::SET_COMPUTER_NAME,
         "identity.computerName");
    plan(wanted.primaryDnsSuffix, now.configured.primaryDnsSuffix, "primary DNS suffix",
         LibraryOperation::SET_PRIMARY_DNS_SUFFIX, "identity.primaryDnsSuffix");
    plan(wanted.workgroup, now.workgroup, "workgroup", LibraryOperation::SET_WORKGROUP_NAME, "identity.workgroup");
}

/// A difference of an adapter that is there, which no step concerns.
bool IsOutOfReach(const Machine& machine, const Plan& plan, const Difference& difference)
{
    return std::ranges::any_of(plan.targets,
                               [&](const Target& target) {
                                   return target.name == difference.adapter && FindAdapter(machine, target.guid);
                               }) &&
           std::ranges::none_of(plan.steps, [&](const Step& step) {
               return step.adapter == difference.adapter &&
                      std::ranges::find(step.touches, difference.path) != step.touches.end();
           });
}

/// What goes or stays with a change although nothing is said about it, and what does not change.
void AddNotes(const Machine& machine, Plan& plan)
{
    for (const Target& target : plan.targets)
    {
        const Adapter* const adapter = FindAdapter(machine, target.guid);
        const DesiredIp& ip = target.desired.ipv4;
        if (adapter == nullptr || !ip.dhcp || DhcpStands(*adapter, *ip.dhcp))
            continue;
        const ConfiguredIp& configured = adapter->ipv4.configured;
        const bool automatic = configured.dnsServers == AutomaticOr<std::vector<IpAddress>>();
        if (!*ip.dhcp && automatic && !ip.dnsServers)
            plan.notes.push_back(target.name +
                                 ": the DNS servers that DHCP gave go with it; \"dnsServers\" can name others.");
        if (*ip.dhcp && !automatic && !ip.dnsServers)
            plan.notes.push_back(target.name +
                                 ": the static DNS servers stay; \"dnsServers\": \"automatic\" removes them.");
        if (*ip.dhcp && !ip.gateways && configured.gateways && !configured.gateways->empty())
            plan.notes.push_back(target.name + ": static gateways may stay; \"gateways\": [] removes them.");
    }
    for (const Difference& difference : plan.differences)
    {
        if (IsOutOfReach(machine, plan, difference))
            plan.notes.push_back(difference.adapter + ": no step changes " + difference.path +
                                 ": what is configured is as it should be, or cannot be read.");
        if (difference.path == "ipv4.dnsSuffix" || difference.path == "ipv4.netbios")
            plan.notes.push_back(difference.adapter + ": " + difference.path +
                                 " is stored; the system may not use it until the adapter has been restarted.");
    }
    if (std::ranges::any_of(plan.differences, [](const Difference& difference) {
            return difference.path == "identity.computerName" || difference.path == "identity.primaryDnsSuffix";
        }))
        plan.notes.emplace_back("The names of the machine take effect when it starts next time.");
}

} // namespace

Plan MakePlan(const Machine& machine, std::vector<Target> targets, const DesiredIdentity& identity,
              std::vector<Fault>& faults)
{
    Plan plan;
    plan.targets = std::move(targets);
    plan.identity = identity;
    plan.differences = Differences(machine, plan.targets, identity);
    const std::size_t count = faults.size();
    for (const Target& target : plan.targets)
        if (const Adapter* const adapter = FindAdapter(machine, target.guid))
            Feasibility(machine, target, *adapter, faults).Check();
    if (identity.workgroup && machine.identity.membership && machine.identity.membership != Membership::WORKGROUP &&
        machine.identity.workgroup != identity.workgroup)
        faults.push_back(
            {FaultKind::SYSTEM, "/identity/workgroup", "cannot be set: the machine is a member of a domain"});
    if (faults.size() != count)
        return plan;
    Planner(machine, plan.targets, plan.steps).Plan();
    PlanIdentity(machine.identity, identity, plan.steps);
    AddNotes(machine, plan);
    return plan;
}

Plan MakePlan(const Machine& machine, const DesiredState& state, std::vector<Fault>& faults)
{
    const std::size_t count = faults.size();
    const auto adapters = ResolveAdapters(machine, state, faults);
    CheckDesiredState(machine, adapters, state, faults);
    std::vector<Target> targets;
    for (std::size_t i = 0; i < adapters.size() && faults.size() == count; ++i)
    {
        const std::string place = PlaceOf("/adapters", i);
        if (adapters[i]->guid)
            targets.push_back(
                {*adapters[i]->guid, NameOf(*adapters[i]), place, Complete(*adapters[i], state.adapters[i]), false});
        else
            faults.push_back({FaultKind::SYSTEM, place, "this adapter has no GUID by which it could be changed"});
    }
    if (faults.size() != count)
        return {};
    return MakePlan(machine, std::move(targets), state.identity, faults);
}

Json ToJson(const Plan& plan)
{
    return {{"differs", !plan.differences.empty()},
            {"items", JsonValue<std::vector<Difference>>::Write(plan.differences)},
            {"steps", JsonValue<std::vector<Step>>::Write(plan.steps)},
            {"notes", plan.notes}};
}

} // namespace zelk
