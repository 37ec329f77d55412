// The engine on the real registry of a private Wine and the kernel of a network namespace, which a stand-in for netsh
// changes. What it says is compared with what the kernel says.

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <regex>

#include <gtest/gtest.h>

#include <state/apply/apply.h>
#include <state/apply/take_back.h>
#include <state/desired/adapter_name.h>
#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/desired_walk.h>
#include <state/reading/read_anew.h>
#include <support/golden.h>
#include <support/import_patch.h>

#include "torture_budget.h"
#include "two_links.h"

using namespace zelk;

namespace
{

class Apply : public testing::Test
{
protected:
    static void SetUpTestSuite() { RegisterLinks(); }

    void SetUp() override { Begin(START); }

    void Begin(const char* state) { ASSERT_TRUE(Do(state).open.empty()) << m_text; }

    static ApplyOptions Within(std::chrono::seconds timeout)
    {
        ApplyOptions options;
        options.timeout = timeout;
        return options;
    }

    ApplyResult Do(const std::string& text, const ApplyOptions& options = Within(std::chrono::seconds(15)))
    {
        std::vector<Fault> faults;
        const DesiredState state = ParseDesiredState(text, faults);
        const Machine machine = ReadAnew();
        const Plan plan = MakePlan(machine, state, faults);
        for (const Fault& fault : faults)
            ADD_FAILURE() << fault.place << ' ' << fault.text << '\n' << text;
        ApplyResult result = zelk::Apply(machine, plan, options);
        m_text = ToJson(result, plan).dump(1);
        m_text.erase(std::min(m_text.find("\"adapters\""), m_text.size())); // too much to read
        return result;
    }

    static constexpr const char* START = R"({"adapters": [
        {"adapter": "lan0", "mtu": 1500,
         "ipv4": {"addresses": ["192.0.2.10/24", "192.0.2.12/24"], "gateways": [{"address": "192.0.2.1", "metric": 5}],
                  "dnsServers": ["192.0.2.53"], "metric": "automatic", "dnsSuffix": "", "netbios": "dhcp"},
         "ipv6": {"addresses": ["2001:db8::10/64"], "gateways": []},
         "routes": [{"destination": "172.16.0.0/12", "nextHop": "192.0.2.9", "metric": 3}]},
        {"adapter": "lan1", "ipv4": {"addresses": ["203.0.113.7/24"], "gateways": [], "dnsServers": "automatic",
                                     "netbios": "dhcp"},
         "ipv6": {"addresses": []}, "routes": []}]})";
    std::string m_text; ///< the last answer
};

/// The outcome of each state, and what the kernel has then. "N" stands for the number of the first link, of which the
/// network makes its addresses.
TEST_F(Apply, ChangesEachItemAloneAndAllTogether)
{
    const std::string number = "." + std::to_string(*FindAdapters(ReadAnew(), "lan0")[0]->index % 256) + ".";
    const std::string start = Kernel();
    testing_support::ExpectTranscript([&](const std::string& question) {
        if (question == "start")
        {
            Begin(START);
            EXPECT_EQ(start, Kernel());
            return std::string();
        }
        const std::string state = std::regex_replace(question, std::regex("\\.N\\."), number);
        const Outcome outcome = Do(state).outcome;
        EXPECT_EQ(Outcome::UNCHANGED, Do(state).outcome) << m_text;
        return std::string(WordOf(outcome)) + '\n' +
               std::regex_replace(Kernel(), std::regex("198\\.18\\.[0-9]+\\."), "198.18.N.");
    });
}

/// A change that is complete only some time after its last command.
TEST_F(Apply, LooksAgainAsSoonAsThePlatformNotifies)
{
    static int registered;
    static void* event;
    registered = 0;
    const auto Register = [](ADDRESS_FAMILY, void*, void* context, BOOLEAN, HANDLE*) -> DWORD {
        ++registered;
        event = context;
        return NO_ERROR;
    };
    const auto patch = testing_support::ImportPatch<decltype(&::GetProcAddress)>(
        "GetProcAddress", [&](auto original, HMODULE module, const char* name) -> FARPROC {
            DWORD (*const notify)(ADDRESS_FAMILY, void*, void*, BOOLEAN, HANDLE*) = Register;
            return name == std::string("NotifyRouteChange2")
                       ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(notify))
                       : original(module, name);
        });
    const StandIn idle("ZELK_IDLE", "10.9.0.0/16");
    ApplyOptions options = Within(std::chrono::seconds(60));
    options.lookInterval = std::chrono::hours(1);
    options.isCancelled = [] { // is asked between a look and the wait for the next one
        std::string output;
        if (registered == 2 && RunUnix("ip route add 10.9.0.0/16 via 192.0.2.9 dev lan0", output))
            registered += ::SetEvent(event);
        return false;
    };
    const auto start = std::chrono::steady_clock::now();
    const ApplyResult result = Do(R"({"adapters": [{"adapter": "lan0", "routes": [
        {"destination": "10.9.0.0/16", "nextHop": "192.0.2.9", "store": "active"}]}]})",
                                  options);
    EXPECT_EQ(Outcome::CHANGED, result.outcome) << m_text;
    EXPECT_GT(options.timeout / 2, std::chrono::steady_clock::now() - start);
}

Plan PlanFor(const char* text)
{
    std::vector<Fault> faults;
    return MakePlan(ReadAnew(), ParseDesiredState(text, faults), faults);
}

bool Writes(const Step& step)
{
    const auto* const route = std::get_if<StoredRoute>(&step.action);
    return std::holds_alternative<StoredSetting>(step.action) || (route != nullptr && route->wanted);
}

/// How one step fails: a command is refused, killed, hangs, is late, prints without end or meets another changer; or a
/// write is refused.
struct Failure
{
    const char* kind = "";
    std::string command;      ///< empty for a write
    std::size_t writesBefore; ///< by other steps

    [[nodiscard]] auto Arm() const
    {
        return std::make_pair(std::make_unique<StandIn>(kind, command.empty() ? "nothing" : command),
                              std::make_unique<testing_support::ImportPatch<decltype(&::RegSetValueExW)>>(
                                  "RegSetValueExW",
                                  [left = writesBefore + 1, none = !command.empty()](
                                      decltype(&::RegSetValueExW) original, auto... arguments) mutable -> LSTATUS {
                                      return !none && left > 0 && --left == 0 ? ERROR_ACCESS_DENIED
                                                                              : original(arguments...);
                                  }));
    }
};

/// Every step in every way.
std::vector<Failure> FailuresOf(const std::vector<Step>& steps)
{
    std::vector<Failure> failures;
    std::size_t writes = 0;
    for (const Step& step : steps)
    {
        const std::string command = CommandText(step.action);
        for (const char* const kind :
             {"ZELK_REFUSED", "ZELK_KILLED", "ZELK_HANG", "ZELK_SLOW", "ZELK_TALKS", "ZELK_OTHER"})
            if (!command.empty())
                failures.push_back({kind, command, 0});
        if (Writes(step))
            failures.push_back({"ZELK_REFUSED", "", writes++});
    }
    return failures;
}

/// Whatever becomes of a change, the machine is as it was or as it was asked for, or the answer says what is not.
TEST_F(Apply, IsWhollyDoneOrUndoneOrSaysSoWhateverStepFails)
{
    const std::vector<Step> steps = PlanFor(MANY_STEPS).steps;
    ASSERT_LE(10u, steps.size());
    std::vector<Failure> failures = FailuresOf(steps);
    const TortureBudget budget;
    std::ranges::shuffle(failures, std::mt19937(budget.seed));
    std::map<std::string, int> outcomes;
    for (std::size_t i = 0; i < failures.size() && !budget.IsOver(i, failures.size()); ++i)
    {
        const Failure& failure = failures[i];
        SCOPED_TRACE(failure.kind + (' ' + failure.command) + ' ' + std::to_string(failure.writesBefore));
        const std::string before = Kernel() + Registry();
        auto armed = std::optional(failure.Arm());
        const ApplyResult result = Do(MANY_STEPS, Within(std::chrono::seconds(3)));
        const std::string answer = m_text;
        armed.reset();
        const bool undone = result.undo && result.undo->open.empty();
        if (undone)
            EXPECT_EQ(before, Kernel() + Registry()) << answer;
        else if (result.outcome == Outcome::CHANGED)
            EXPECT_EQ(Outcome::UNCHANGED, Do(MANY_STEPS).outcome) << answer << m_text;
        else
            EXPECT_FALSE((result.undo ? result.undo->open : result.open).empty()) << answer;
        ++outcomes[failure.kind + 5 + (undone ? " undone" : std::string(" ") + WordOf(result.outcome))];
        if (!undone)
        {
            Do(R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["10.99.99.99/24"]}}]})"); // for their order
            Begin(START);
        }
    }
    for (const auto& [outcome, count] : outcomes)
        std::cout << "figure: " << outcome << '\t' << count << '\n';
}

/// As where a system lacks something for a moment.
TEST_F(Apply, StartsACommandAgainThatHasNotBegun)
{
    int refused = 1;
    const testing_support::ImportPatch<decltype(&::CreateProcessW)> start(
        "CreateProcessW", [&](auto... arguments) -> BOOL {
            ::SetLastError(ERROR_NO_SYSTEM_RESOURCES);
            return refused-- > 0 ? FALSE : start.Original()(arguments...);
        });
    int broken = 0;
    const testing_support::ImportPatch<decltype(&::GetExitCodeProcess)> end(
        "GetExitCodeProcess", [&](HANDLE process, DWORD* code) {
            const BOOL done = end.Original()(process, code);
            if (broken-- > 0)
                *code = 0xC0000142; // STATUS_DLL_INIT_FAILED
            return done;
        });
    const auto set = [this](const std::string& server) {
        return Do(R"({"adapters": [{"adapter": "lan0", "ipv4": {"dnsServers": [")" + server + "\"]}}]}").outcome;
    };
    EXPECT_EQ(Outcome::CHANGED, set("192.0.2.98")) << m_text;
    broken = 1;
    EXPECT_EQ(Outcome::CHANGED, set("192.0.2.99")) << m_text;
    refused = 2;
    EXPECT_EQ(Outcome::FAILED, set("192.0.2.98")) << m_text;
}

/// As where the registry could not be read rightly before the change.
TEST_F(Apply, CallsNothingRestoredThatTheRegistryThenLacks)
{
    constexpr const char* SUFFIX = R"({"adapters": [{"adapter": "lan0", "ipv4": {"dnsSuffix": "example.org"}}]})";
    Begin(SUFFIX);
    const Plan plan = PlanFor(SUFFIX);
    const std::wstring key = IPV4_INTERFACES + FromUtf8(plan.targets.at(0).guid.ToText());
    const Undo undo =
        TakeBack(plan.targets, {}, StoredForm({{key, L"Domain", std::nullopt}}), Within(std::chrono::seconds(5)));
    ASSERT_EQ(1u, undo.open.size());
    EXPECT_EQ("ipv4.dnsSuffix", undo.open[0].path);
}

/// Holds what is wanted of one link against what the kernel says.
void ExpectInKernel(const DesiredAdapter& wanted, const std::string& kernel)
{
    const auto expect = [&](const std::string& text) {
        EXPECT_NE(std::string::npos, kernel.find(text)) << text << '\n' << kernel;
    };
    for (const Family family : FAMILIES)
    {
        const DesiredIp& ip = wanted.Of(family);
        for (const IpPrefix& address : ip.addresses.value_or(std::vector<IpPrefix>()))
            expect(wanted.adapter + ' ' + address.ToText() + '\n');
        for (const Gateway& gateway : ip.gateways.value_or(std::vector<Gateway>()))
            expect("default via " + gateway.address.ToText() + " metric " + std::to_string(gateway.metric.value_or(0)));
        const auto* const servers = ip.dnsServers ? std::get_if<std::vector<IpAddress>>(&*ip.dnsServers) : nullptr;
        std::string lines;
        for (const IpAddress& server : servers != nullptr ? *servers : std::vector<IpAddress>())
            lines += "nameserver " + server.ToText() + '\n';
        expect(lines);
    }
    for (const DesiredRoute& route : wanted.routes.value_or(std::vector<DesiredRoute>()))
        expect(route.destination.ToText() + " via " + route.nextHop.ToText() + " metric " +
               std::to_string(route.metric.value_or(0)));
    if (wanted.ipv4.addresses)
    {
        const std::regex own(wanted.adapter + " [0-9.]+/");
        EXPECT_EQ(wanted.ipv4.addresses->size(),
                  std::distance(std::sregex_iterator(kernel.begin(), kernel.end(), own), std::sregex_iterator()))
            << kernel;
    }
}

TEST_F(Apply, ReachesWhateverIsWantedAndTheWayBack)
{
    constexpr std::size_t WALKED_STATES = 200;
    const TortureBudget budget;
    std::cout << "seed " << budget.seed << '\n';
    const Machine first = ReadAnew();
    DesiredWalk walk(budget.seed, {*FindAdapters(first, "lan0")[0]->index, *FindAdapters(first, "lan1")[0]->index});
    const auto exported = [](const Machine& machine) {
        return ToJson(ExportState(machine, ExportedAdapters(machine), true).state).dump();
    };
    const std::string start = exported(first);
    const std::string kernel = Kernel();
    std::size_t states = 0;
    for (; !budget.IsOver(states, WALKED_STATES); ++states)
    {
        const std::string text = walk.Next().dump();
        const Outcome outcome = Do(text).outcome;
        ASSERT_TRUE(outcome == Outcome::CHANGED || outcome == Outcome::UNCHANGED) << text << m_text;
        std::vector<Fault> faults;
        const std::string now = Kernel();
        for (const DesiredAdapter& wanted : ParseDesiredState(text, faults).adapters)
            ExpectInKernel(wanted, now);
        ASSERT_EQ(Outcome::UNCHANGED, Do(text).outcome) << text << m_text;
        ASSERT_FALSE(HasFailure()) << "seed " << budget.seed << ' ' << text;
    }
    std::cout << "figure: states of a random walk\t" << states << '\n';
    // The order of addresses is no part of a state. Where none of them is left, it is the document's.
    Do(R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["10.99.99.99/24"]}}]})");
    EXPECT_EQ(Outcome::CHANGED, Do(start).outcome) << m_text;
    EXPECT_EQ(kernel, Kernel());
    EXPECT_EQ(start, exported(ReadAnew()));
}

} // namespace
