// Plans for desired states, performed on a machine that changes as Windows does, and the faults of those that have
// none.

#include <algorithm>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/desired/standing.h>
#include <state/desired_walk.h>
#include <state/simulated_windows.h>
#include <support/golden.h>

using namespace zelk;

namespace
{

DesiredState Parse(const std::string& text)
{
    std::vector<Fault> faults;
    DesiredState state = ParseDesiredState(text, faults);
    EXPECT_TRUE(faults.empty()) << text << '\n' << faults[0].text;
    return state;
}

Plan PlanFor(const Machine& machine, const DesiredState& state)
{
    std::vector<Fault> faults;
    Plan plan = MakePlan(machine, state, faults);
    for (const Fault& fault : faults)
        ADD_FAILURE() << fault.place << ": " << fault.text << '\n' << ToJson(state).dump();
    return plan;
}

/// Performs all steps, and a second plan for routes that a command has taken with it.
bool Reach(SimulatedWindows& windows, const DesiredState& state)
{
    const auto perform = [&](const Step& step) { return windows.Perform(step); };
    const Plan plan = PlanFor(windows.machine, state);
    std::vector<Fault> faults;
    return std::ranges::all_of(plan.steps, perform) &&
           std::ranges::all_of(MakePlan(windows.machine, plan.targets, plan.identity, faults).steps, perform) &&
           Differences(windows.machine, plan.targets, plan.identity).empty();
}

/// lan0 with two addresses, a gateway and a server; lan1 a DHCP client.
SimulatedWindows Start()
{
    SimulatedWindows windows;
    windows.Add("lan0");
    windows.Add("lan1");
    EXPECT_TRUE(Reach(windows, Parse(R"({"adapters": [
        {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.10/24", "10.0.0.10/8"], "gateways": ["192.0.2.1"],
                                     "dnsServers": ["192.0.2.53"]},
         "routes": [{"destination": "172.16.0.0/12", "nextHop": "10.0.0.1", "metric": 5}]},
        {"adapter": "lan1", "ipv4": {"dhcp": true}}]})")));
    return windows;
}

/// What is different about a machine and its lan0, by the words that a question of a transcript begins with.
const std::map<std::string, void (*)(Environment&, Adapter&)> MACHINES = {
    {"", [](auto&, auto&) {}},
    {"exactly: ", [](auto&, auto&) {}},
    {"6.0: ", [](auto& system, auto&) { system.majorVersion = 6; }},
    {"5.2: ", [](auto& system, auto&) { system.backEnd = BackEnd::PRE_VISTA, system.majorVersion = 5; }},
    {"unbound: ", [](auto& system, auto&) { system.protocolBinding = false; }},
    {"a\"b: ", [](auto&, auto& lan0) { lan0.connectionName = "a\"b"; }},
    {"disabled: ", [](auto&, auto& lan0) { lan0.status = AdapterStatus::DISABLED; }},
    {"5.2 disabled: ", [](auto& system, auto& lan0) { system.backEnd = BackEnd::PRE_VISTA, lan0.enabled = false; }},
    {"no device: ", [](auto&, auto& lan0) { lan0.deviceInstance.reset(); }},
    {"other address: ",
     [](auto&, auto& lan0) { lan0.driver.hardwareAddress = HardwareAddress::Parse("020000000001"); }},
    {"active: ", [](auto&, auto& lan0) { lan0.routes->back().store = RouteStore::ACTIVE; }},
    {"stored: ", [](auto&, auto& lan0) { lan0.routes->back().store = RouteStore::PERSISTENT; }},
    {"on link: ", [](auto&, auto& lan0) { lan0.routes->back().nextHop = *IpAddress::Parse("0.0.0.0"); }},
    {"unused: ", [](auto&, auto& lan0) { lan0.ipv4.addresses->pop_back(); }},
    {"leased: ",
     [](auto&, auto& lan0) {
         lan0.ipv4.configured.dhcp = true;
         lan0.ipv4.lease.emplace().gateways = {*IpAddress::Parse("192.0.2.1")};
     }},
    {"unknown: ", // as where the table of adapters could not be read
     [](auto&, auto& lan0) {
         lan0.routes.reset();
         lan0.index.reset();
         for (IpSettings* const settings : {&lan0.ipv4, &lan0.ipv6})
             settings->addresses.reset(), settings->gateways.reset(), settings->dnsServers.reset();
     }},
    {"unread: ",
     [](auto&, auto& lan0) { lan0.ipv4.configured.addresses.reset(), lan0.ipv4.configured.gateways.reset(); }},
    {"unread IPv6: ",
     [](auto&, auto& lan0) {
         lan0.ipv6.addresses->emplace_back().address = *IpAddress::Parse("fe80::1");
         lan0.ipv6.configured.addresses.reset();
     }},
};

/// The machine of a question, whose words in front of the desired state are taken away.
SimulatedWindows MachineOf(std::string& question)
{
    const std::size_t begin = question.find_first_of("{[");
    SimulatedWindows windows = Start();
    MACHINES.at(question.substr(0, begin))(windows.machine.environment, windows.Find("lan0"));
    question.erase(0, begin);
    return windows;
}

std::string TextOf(const std::vector<Step>& steps)
{
    std::string text;
    for (const Step& step : steps)
        text += (CommandText(step.action).empty() ? MeansOf(step.action) : CommandText(step.action)) + '\n';
    return text;
}

/// The commands, or the other means, of the plan for a desired state; its faults where it has some.
std::string StepsFor(std::string question)
{
    SimulatedWindows windows = MachineOf(question);
    std::vector<Fault> faults;
    const DesiredState state = ParseDesiredState(question, faults);
    const Plan plan = faults.empty() ? MakePlan(windows.machine, state, faults) : Plan();
    std::string answer;
    for (const Fault& fault : faults)
        answer += (fault.kind == FaultKind::SYSTEM ? "not here: " : "") + fault.place + ": " + fault.text + '\n';
    if (!faults.empty())
        return answer;
    EXPECT_TRUE(Reach(windows, state) && PlanFor(windows.machine, state).steps.empty()) << question;
    return TextOf(plan.steps);
}

/// The differences, the steps and the notes of the plan for a machine of which not everything is known; after
/// "exactly", of the plan that restores just these settings.
std::string PlanOfWhatIsKnown(std::string question)
{
    const bool exact = question.starts_with("exactly");
    const SimulatedWindows windows = MachineOf(question);
    const DesiredState state = Parse(question);
    Plan plan = PlanFor(windows.machine, state);
    if (exact)
    {
        std::vector<Fault> faults;
        plan = MakePlan(windows.machine, {{plan.targets[0].guid, "lan0", "", state.adapters[0], true}}, {}, faults);
    }
    std::string answer;
    for (const Difference& difference : plan.differences)
        answer += difference.path + ": " + difference.before.dump() + " -> " + difference.after.dump() + '\n';
    answer += TextOf(plan.steps);
    for (const std::string& note : plan.notes)
        answer += note + '\n';
    return answer;
}

TEST(Plan, TakesNothingForStandingOfWhichNobodyKnows)
{
    testing_support::ExpectTranscript(PlanOfWhatIsKnown);
}

TEST(Plan, HasTheFewestStepsInTheSafeOrder)
{
    testing_support::ExpectTranscript(StepsFor);
}

TEST(DesiredState, FaultsAreNamedWithTheirPlace)
{
    testing_support::ExpectTranscript(StepsFor);
}

TEST(Export, LeavesOutWhatIsInUseOtherwiseThanConfigured)
{
    SimulatedWindows windows = Start();
    windows.Find("lan0").ipv4.configured.dnsServers = std::vector{*IpAddress::Parse("192.0.2.54")};
    const auto exported = [&] { return ExportState(windows.machine, ExportedAdapters(windows.machine), false); };
    EXPECT_EQ(1u, exported().leftOut.size()) << "its only server is not in use";
    const DesiredState state = exported().state;
    EXPECT_FALSE(state.adapters[0].ipv4.dnsServers);
    EXPECT_EQ("192.0.2.10/24", state.adapters[0].ipv4.addresses->at(0).ToText());
    EXPECT_EQ(true, state.adapters[1].ipv4.dhcp);
    EXPECT_FALSE(state.adapters[1].ipv4.addresses) << "DHCP gives them";
    windows.Settle();
    EXPECT_TRUE(exported().leftOut.empty());
    EXPECT_TRUE(PlanFor(windows.machine, exported().state).differences.empty());
}

TEST(Export, TakesNothingForInUseOfWhichNobodyKnows)
{
    std::string question = "unknown: {";
    SimulatedWindows windows = MachineOf(question);
    windows.machine.adapters[0].ipv4.mtu = 0xFFFFFFFF; // none
    const DesiredAdapter exported =
        ExportState(windows.machine, {&windows.machine.adapters[0]}, false).state.adapters[0];
    EXPECT_FALSE(exported.ipv4.addresses || exported.ipv4.dnsServers || exported.ipv6.addresses ||
                 exported.ipv6.gateways || exported.routes || exported.ipv4.mtu);
}

/// Whether every address that the machine has now and will have again is there in between.
bool KeepsAddresses(const Machine& before, const Plan& plan, const Machine& now)
{
    return std::ranges::all_of(plan.targets, [&](const Target& target) {
        const auto wanted = target.desired.ipv4.addresses.value_or(std::vector<IpPrefix>());
        const auto had = ConfiguredAddresses(*FindAdapter(before, target.guid), Family::IPV4);
        const auto has = AddressesInUse(*FindAdapter(now, target.guid), Family::IPV4);
        return std::ranges::all_of(wanted, [&](const IpPrefix& one) { return !Has(*had, one) || Has(has, one); });
    });
}

TEST(Plan, ReachesWhateverIsWantedAndTheWayBack)
{
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    DesiredWalk walk(seed, {1, 2});
    SimulatedWindows windows = Start();
    ASSERT_TRUE(Reach(windows, Parse(R"({"adapters": [{"adapter": "lan0", "ipv4": {
        "gateways": [{"address": "192.0.2.1", "metric": 5}]}}]})"))); // without one, the last one would stay
    const Machine first = windows.machine;
    const DesiredState start = ExportState(first, ExportedAdapters(first), false).state;
    for (int i = 0; i < 200; ++i)
    {
        const DesiredState state = Parse(walk.Next().dump());
        const Machine before = windows.machine;
        SimulatedWindows checked = windows;
        const Plan plan = PlanFor(before, state);
        for (const Step& step : plan.steps)
        {
            ASSERT_TRUE(checked.Perform(step)) << step.text << '\n' << ToJson(state).dump();
            ASSERT_TRUE(KeepsAddresses(before, plan, checked.machine)) << step.text << '\n' << ToJson(state).dump();
        }
        ASSERT_TRUE(Reach(windows, state)) << ToJson(state).dump();
        ASSERT_TRUE(PlanFor(windows.machine, state).differences.empty()) << ToJson(state).dump();
    }
    ASSERT_TRUE(Reach(windows, start)) << ToJson(start).dump();
    const auto end = ExportState(windows.machine, ExportedAdapters(windows.machine), false);
    EXPECT_TRUE(PlanFor(first, end.state).differences.empty()) << ToJson(end.state).dump();
}

} // namespace
