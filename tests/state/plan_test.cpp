// Plans, performed on a machine that changes as Windows does.

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/desired/standing.h>
#include <state/desired_walk.h>
#include <state/plan/restore.h>
#include <state/simulated_windows.h>

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
    const Plan plan = PlanFor(windows.machine, state);
    for (const Step& step : plan.steps)
        if (!windows.Perform(step))
            return false;
    std::vector<Fault> faults;
    for (const Step& step : MakePlan(windows.machine, plan.targets, plan.identity, faults).steps)
        if (!windows.Perform(step))
            return false;
    return Differences(windows.machine, plan.targets, plan.identity).empty();
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

struct Sentence
{
    const char* state;                 ///< of the first or only adapter, behind its name
    std::vector<std::string> commands; ///< behind "netsh interface "
};

/// Holds the commands of a plan against those expected, and performs them.
void ExpectCommands(SimulatedWindows windows, const Sentence& sentence,
                    const std::string& start = "netsh.exe interface ")
{
    const DesiredState state = Parse(R"({"adapters": [{"adapter": ")" + std::string(sentence.state) + "}]}");
    std::vector<std::string> commands;
    for (const Step& step : PlanFor(windows.machine, state).steps)
        if (const std::string command = CommandText(step.action); !command.empty())
            commands.push_back(command.starts_with(start) ? command.substr(start.size()) : command);
    EXPECT_EQ(sentence.commands, commands) << sentence.state;
    EXPECT_TRUE(Reach(windows, state)) << sentence.state;
    EXPECT_TRUE(PlanFor(windows.machine, state).steps.empty()) << sentence.state;
}

TEST(Plan, ChangesAddressesAndGatewaysByTheFewestStepsInTheSafeOrder)
{
    const Sentence cases[] = {
        {R"(lan0", "ipv4": {"addresses": ["10.0.0.10/8", "192.0.2.10/24"], "gateways": ["192.0.2.1"]})", {}},
        {R"(lan0", "ipv4": {"addresses": ["192.0.2.10/24", "10.0.0.10/8", "10.0.0.11/8"]})",
         {"ipv4 add address lan0 10.0.0.11 255.0.0.0"}},
        {R"(lan0", "ipv4": {"addresses": ["192.0.2.11/24", "10.0.0.10/8"]})",
         {"ipv4 add address lan0 192.0.2.11 255.255.255.0", "ipv4 delete address lan0 192.0.2.10"}},
        {R"(lan0", "ipv4": {"addresses": ["198.51.100.5/25"], "gateways": [{"address": "198.51.100.1", "metric": 7}]}, "routes": [])",
         {"ipv4 delete route 172.16.0.0/12 lan0 10.0.0.1",
          "ipv4 set address lan0 static 198.51.100.5 255.255.255.128 198.51.100.1 7"}},
        {R"(lan0", "ipv4": {"gateways": ["192.0.2.2"]})",
         {"ipv4 add address lan0 gateway=192.0.2.2", "ipv4 delete address lan0 gateway=192.0.2.1"}},
        {R"(lan0", "ipv4": {"gateways": [{"address": "192.0.2.1", "metric": 7}]})",
         {"ipv4 set route 0.0.0.0/0 lan0 192.0.2.1 metric=7 store=active"}}, // and the registry
        {R"(lan0", "ipv4": {"dhcp": true})", {"ipv4 set address lan0 dhcp"}},
        {R"(lan0", "ipv4": {"dhcp": true, "gateways": []})",
         {"ipv4 delete address lan0 gateway=192.0.2.1", "ipv4 set address lan0 dhcp"}},
        // The very address, and the gateway, that are leased become static.
        {R"(lan1", "ipv4": {"addresses": ["198.18.2.77/24"]})",
         {"ipv4 set address lan1 static 198.18.2.77 255.255.255.0 198.18.2.1"}},
        {R"(lan1", "ipv4": {"gateways": ["198.18.2.1"]})", {}}, // it is stored
        {R"(lan1", "ipv4": {"gateways": [{"address": "198.18.2.9", "metric": 3}]})",
         {"ipv4 add route 0.0.0.0/0 lan1 198.18.2.9 metric=3 store=active"}},
        // The address moves: it goes before it comes.
        {R"(lan1", "ipv4": {"addresses": ["10.0.0.10/8"]}}, {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.10/24"]})",
         {"ipv4 delete route 172.16.0.0/12 lan0 10.0.0.1", "ipv4 delete address lan0 10.0.0.10",
          "ipv4 set address lan1 static 10.0.0.10 255.0.0.0"}},
    };
    for (const Sentence& sentence : cases)
        ExpectCommands(Start(), sentence);
}

TEST(Plan, ChangesTheOtherSettingsByTheFewestSteps)
{
    const Sentence cases[] = {
        {R"(lan0", "ipv4": {"dnsServers": ["192.0.2.54", "192.0.2.53"]})",
         {"ipv4 set dnsservers lan0 static 192.0.2.54 validate=no",
          "ipv4 add dnsservers lan0 192.0.2.53 index=2 validate=no"}},
        {R"(lan0", "ipv4": {"dnsServers": ["192.0.2.53", "192.0.2.54"]})",
         {"ipv4 add dnsservers lan0 192.0.2.54 index=2 validate=no"}},
        {R"(lan0", "ipv4": {"dnsServers": "automatic"})", {"ipv4 set dnsservers lan0 dhcp"}},
        {R"(lan0", "ipv6": {"addresses": ["2001:db8::20/64"], "gateways": ["fe80::1"], "dnsServers": ["2001:db8::53"]})",
         {"ipv6 add address lan0 2001:db8::20/64", "ipv6 add route ::/0 lan0 fe80::1",
          "ipv6 set dnsservers lan0 static 2001:db8::53 validate=no"}},
        {R"(lan0", "mtu": 1400, "ipv4": {"metric": 30})",
         {"ipv4 set interface lan0 metric=30", "ipv4 set subinterface lan0 mtu=1400 store=persistent",
          "ipv6 set subinterface lan0 mtu=1400 store=persistent"}},
        {R"(lan0", "routes": [{"destination": "172.16.0.0/12", "nextHop": "10.0.0.1", "metric": 6, "store": "active"}])",
         {"ipv4 set route 172.16.0.0/12 lan0 10.0.0.1 metric=6 store=active"}},
    };
    for (const Sentence& sentence : cases)
        ExpectCommands(Start(), sentence);
}

TEST(Plan, SpeaksToEverySystemInItsOwnWords)
{
    SimulatedWindows old = Start();
    old.machine.environment.backEnd = BackEnd::PRE_VISTA;
    old.machine.environment.majorVersion = 5;
    const Sentence ofOld[] = {
        {R"(lan0", "ipv4": {"addresses": ["198.51.100.5/25"], "gateways": ["198.51.100.1"], "dnsServers": ["192.0.2.7", "192.0.2.8"]},
             "routes": [{"destination": "10.9.0.0/16", "nextHop": "198.51.100.2"}])",
         {"route.exe DELETE 172.16.0.0 MASK 255.240.0.0 10.0.0.1 IF 1",
          "set address lan0 static 198.51.100.5 255.255.255.128 198.51.100.1 1",
          "route.exe -p ADD 10.9.0.0 MASK 255.255.0.0 198.51.100.2 IF 1", "set dns lan0 static 192.0.2.7",
          "add dns lan0 192.0.2.8 index=2"}},
        {R"(lan0", "ipv4": {"addresses": ["198.51.100.5/25"], "gateways": [], "dnsServers": "automatic"}, "routes": [])",
         {"route.exe DELETE 172.16.0.0 MASK 255.240.0.0 10.0.0.1 IF 1",
          "set address lan0 static 198.51.100.5 255.255.255.128 none", "set dns lan0 static none"}},
        {R"(lan1", "ipv4": {"gateways": ["198.18.2.9"]})", {"route.exe ADD 0.0.0.0 MASK 0.0.0.0 198.18.2.9 IF 2"}},
    };
    for (const Sentence& sentence : ofOld)
        ExpectCommands(old, sentence, "netsh.exe interface ip ");
    SimulatedWindows vista = Start();
    vista.machine.environment.majorVersion = 6;
    ExpectCommands(vista, {R"(lan0", "ipv4": {"dnsServers": ["192.0.2.7"]})", {"set dnsserver lan0 static 192.0.2.7"}},
                   "netsh.exe interface ipv4 ");
}

TEST(Plan, RefusesByNameWhatASystemOrAnAdapterCannotDo)
{
    const auto faultOf = [](auto&& change, const char* rest) {
        SimulatedWindows windows = Start();
        change(windows);
        std::vector<Fault> faults;
        MakePlan(windows.machine, Parse(R"({"adapters": [{"adapter": "index:1", )" + std::string(rest) + "}]}"),
                 faults);
        return faults.size() == 1 && faults[0].kind == FaultKind::SYSTEM ? faults[0].place : "no single fault";
    };
    const auto old = [](SimulatedWindows& windows) { windows.machine.environment.backEnd = BackEnd::PRE_VISTA; };
    const auto named = [](const char* name) {
        return [name](SimulatedWindows& windows) { windows.Find("lan0").connectionName = name; };
    };
    const char* const servers = R"("ipv4": {"dnsServers": ["192.0.2.9"]})";
    EXPECT_EQ("/adapters/0/ipv6/addresses", faultOf(old, R"("ipv6": {"addresses": ["2001:db8::9/64"]})"));
    EXPECT_EQ("/adapters/0/ipv4/metric", faultOf(old, R"("ipv4": {"metric": 9})"));
    EXPECT_EQ("/adapters/0/ipv6/enabled", faultOf(old, R"("ipv6": {"enabled": false})"));
    EXPECT_EQ("/adapters/0/ipv6/enabled",
              faultOf([](SimulatedWindows& windows) { windows.machine.environment.protocolBinding = false; },
                      R"("ipv6": {"enabled": false})"));
    EXPECT_EQ("/adapters/0", faultOf(named("a\"b"), servers));
    EXPECT_EQ("/adapters/0", faultOf(named("a=b"), servers));
    EXPECT_EQ(
        "/adapters/0",
        faultOf([](SimulatedWindows& windows) { windows.Find("lan0").status = AdapterStatus::DISABLED; }, servers));
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
    EXPECT_TRUE(PlanFor(windows.machine, start).differences.empty());
    EXPECT_TRUE(PlanFor(first, end.state).differences.empty()) << ToJson(end.state).dump();
}

/// Everything that one adapter and the machine can be set to in one plan.
constexpr const char* TEN_STEPS = R"({"adapters": [
    {"adapter": "lan0", "mtu": 1400,
     "ipv4": {"addresses": ["192.0.2.10/24", "192.0.2.11/24"], "gateways": ["192.0.2.2"], "metric": 30,
              "dnsServers": ["192.0.2.54", "192.0.2.53"]}, "routes": []},
    {"adapter": "lan1", "ipv4": {"addresses": ["203.0.113.9/24"], "dnsSuffix": "example.org", "netbios": "disabled"},
     "ipv6": {"enabled": false}}],
    "identity": {"computerName": "pc"}})";

TEST(Plan, IsTakenBackFromEveryStepThatFails)
{
    SimulatedWindows start = Start();
    start.machine.identity.configured.computerName = "old";
    const Plan plan = PlanFor(start.machine, Parse(TEN_STEPS));
    ASSERT_LE(10u, plan.steps.size());
    for (std::size_t failing = 0; failing < plan.steps.size(); ++failing)
    {
        SimulatedWindows windows = start;
        windows.refuse = static_cast<int>(failing);
        std::vector<Step> run;
        bool done = true;
        for (std::size_t i = 0; done; ++i)
        {
            run.push_back(plan.steps[i]);
            done = windows.Perform(plan.steps[i]);
        }
        const auto targets = RestoredTargets(start.machine, run);
        const auto identity = RestoredIdentity(start.machine, run);
        std::vector<Fault> faults;
        for (int round = 0; round < 2; ++round)
            for (const Step& step : MakePlan(windows.machine, targets, identity, faults).steps)
                EXPECT_TRUE(windows.Perform(step)) << failing << ' ' << step.text;
        EXPECT_TRUE(Differences(windows.machine, targets, identity).empty()) << failing;
        const DesiredState before = ExportState(start.machine, ExportedAdapters(start.machine), true).state;
        EXPECT_EQ(before, ExportState(windows.machine, ExportedAdapters(windows.machine), true).state) << failing;
    }
}

} // namespace
