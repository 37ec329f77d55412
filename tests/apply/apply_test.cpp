// The engine on the real registry of a private Wine and the kernel of a network namespace, which a stand-in for netsh
// changes. What it says is compared with what the kernel says.

#include <algorithm>
#include <future>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <regex>

#include <gtest/gtest.h>

#include <state/apply/apply.h>
#include <state/desired/adapter_name.h>
#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/desired_walk.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <state/simulated_windows.h>
#include <support/import_patch.h>

#include "torture_budget.h"
#include "two_links.h"

using namespace zelk;

namespace
{

bool KernelHas(const std::string& text)
{
    return Kernel().find(text) != std::string::npos;
}

/// Makes the two links known to the registry as adapters that have nothing yet.
class Engine : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        for (const Adapter& adapter : ReadMachine().adapters)
            if (adapter.friendlyName && adapter.friendlyName->starts_with("lan"))
                Register(FromUtf8(adapter.guid->ToText()), FromUtf8(*adapter.friendlyName));
    }

    void Begin(const char* state) { ASSERT_TRUE(Do(state).open.empty()) << m_text; }

    static void Register(const std::wstring& guid, const std::wstring& link)
    {
        const std::wstring key = IPV4_INTERFACES + guid;
        const DWORD off = 0;
        const std::wstring name = L"Connection " + link;
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (CONNECTIONS + (L'\\' + guid) + L"\\Connection").c_str(), L"Name", REG_SZ,
                          name.c_str(), static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t)));
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"EnableDHCP", REG_DWORD, &off, sizeof(off));
    }

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

class Apply : public Engine
{
protected:
    void SetUp() override { Begin(START); }
};

class ApplyBeforeVista : public Engine
{
};

/// A variable of the environment for one scope, which the stand-ins inherit.
class Variable
{
public:
    Variable(const char* name, const std::string& text) : m_name(name)
    {
        ::SetEnvironmentVariableA(name, text.c_str());
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { ::SetEnvironmentVariableA(m_name, nullptr); }

private:
    const char* m_name;
};

TEST_F(Apply, DoesNothingWhereNothingDiffers)
{
    const std::string kernel = Kernel();
    const ApplyResult result = Do(START);
    EXPECT_EQ(Outcome::UNCHANGED, result.outcome) << m_text;
    EXPECT_FALSE(result.changed);
    EXPECT_TRUE(result.steps.empty());
    const Machine machine = ReadAnew();
    std::vector<Fault> faults;
    const auto exported = ExportState(machine, ExportedAdapters(machine), true);
    EXPECT_TRUE(MakePlan(machine, exported.state, faults).differences.empty());
    EXPECT_EQ(kernel, Kernel());
}

struct Wish
{
    const char* state; ///< of lan0, behind its name
    std::vector<std::string> has;
    std::vector<std::string> hasNot;
};

void ExpectKernel(const Wish& wish)
{
    for (const std::string& text : wish.has)
        EXPECT_TRUE(KernelHas(text)) << text << '\n' << Kernel();
    for (const std::string& text : wish.hasNot)
        EXPECT_FALSE(KernelHas(text)) << text << '\n' << Kernel();
}

TEST_F(Apply, ChangesEachItemAloneAndAllTogether)
{
    const Wish wishes[] = {
        {R"("ipv4": {"addresses": ["192.0.2.10/24", "192.0.2.11/24"]})",
         {"lan0 192.0.2.10/24", "lan0 192.0.2.11/24", "default via 192.0.2.1 metric 5", "172.16.0.0/12 via 192.0.2.9"},
         {"192.0.2.12/24"}},
        // A command that replaces all addresses takes the routes with it: they come back.
        {R"("ipv4": {"addresses": ["192.0.2.20/24"]})",
         {"lan0 192.0.2.20/24", "default via 192.0.2.1 metric 5", "172.16.0.0/12 via 192.0.2.9 metric 3"},
         {"192.0.2.10/24"}},
        {R"("ipv4": {"gateways": [{"address": "192.0.2.2", "metric": 4}]})",
         {"default via 192.0.2.2 metric 4"},
         {"192.0.2.1 "}},
        {R"("ipv4": {"dnsServers": ["192.0.2.54", "192.0.2.53"]})",
         {"nameserver 192.0.2.54\nnameserver 192.0.2.53\n"},
         {}},
        {R"("ipv4": {"dnsServers": "automatic"})", {}, {"nameserver"}},
        {R"("ipv6": {"addresses": ["2001:db8::20/64"]})", {"lan0 2001:db8::20/64"}, {"2001:db8::10/64"}},
        {R"("routes": [{"destination": "172.16.0.0/12", "nextHop": "192.0.2.9", "metric": 6}])",
         {"172.16.0.0/12 via 192.0.2.9 metric 6"},
         {"metric 3"}},
        {R"("mtu": 1400)", {"mtu 1400"}, {}},
        {R"("ipv4": {"metric": 30, "dnsSuffix": "example.org", "netbios": "disabled"})", {}, {}},
        {R"("mtu": 1300, "ipv4": {"addresses": ["198.51.100.5/25", "192.0.2.30/24"], "gateways": [{"address": "198.51.100.1", "metric": 7}],
             "dnsServers": ["192.0.2.55", "192.0.2.56"], "metric": 20, "dnsSuffix": "b.example", "netbios": "enabled"},
             "ipv6": {"addresses": ["2001:db8::30/64"]}, "routes": [{"destination": "10.9.0.0/16", "nextHop": "192.0.2.9"}])",
         {"lan0 198.51.100.5/25", "default via 198.51.100.1 metric 7", "10.9.0.0/16 via 192.0.2.9", "mtu 1300"},
         {"172.16.0.0/12"}},
    };
    for (const Wish& wish : wishes)
    {
        const std::string state = R"({"adapters": [{"adapter": "lan0", )" + std::string(wish.state) + "}]}";
        EXPECT_EQ(Outcome::CHANGED, Do(state).outcome) << m_text;
        ExpectKernel(wish);
        EXPECT_EQ(Outcome::UNCHANGED, Do(state).outcome) << m_text;
        Begin(START);
    }
}

TEST_F(Apply, GoesToDhcpAndBack)
{
    const std::string start = Kernel();
    const auto lan0 = [&](const char* rest) {
        return R"({"adapters": [{"adapter": "lan0", )" + std::string(rest) + "}]}";
    };
    EXPECT_EQ(Outcome::CHANGED,
              Do(lan0(R"("ipv4": {"dhcp": true, "gateways": [], "dnsServers": "automatic"}, "routes": [])")).outcome)
        << m_text;
    const std::string leased = Kernel();
    EXPECT_TRUE(KernelHas(".77/24") && KernelHas("default via 198.18.") && KernelHas("nameserver 198.18.")) << leased;
    EXPECT_FALSE(KernelHas("192.0.2.")) << leased;
    const Machine machine = ReadAnew();
    const Lease lease = LeaseFor(*FindAdapters(machine, "lan0")[0]);
    const std::string address = lease.address->ToText();
    const std::string gateway = lease.gateways->front().ToText();
    // What is leased becomes static only when somebody wants it to.
    const ApplyResult keptGateway = Do(lan0((R"("ipv4": {"gateways": [")" + gateway + R"("]})").c_str()));
    EXPECT_EQ(Outcome::CHANGED, keptGateway.outcome) << m_text;
    EXPECT_EQ(leased, Kernel());
    const ApplyResult kept = Do(lan0((R"("ipv4": {"addresses": [")" + address + "\"]}").c_str()));
    EXPECT_EQ(Outcome::CHANGED, kept.outcome) << m_text;
    EXPECT_TRUE(KernelHas(address) && KernelHas("default via " + gateway)) << Kernel();
    EXPECT_FALSE(KernelHas("nameserver")) << Kernel();
    Begin(START);
    EXPECT_EQ(start, Kernel());
}

TEST_F(Apply, IsNotVerifiedWithoutALease)
{
    const Variable silent("ZELK_NO_LEASE", "dhcp");
    const ApplyResult result = Do(R"({"adapters": [{"adapter": "lan0", "ipv4": {"dhcp": true}, "routes": []}]})",
                                  Within(std::chrono::seconds(2)));
    EXPECT_EQ(Outcome::NOT_VERIFIED, result.outcome) << m_text;
    EXPECT_FALSE(result.open.empty());
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
    const Variable idle("ZELK_IDLE", "10.9.0.0/16");
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

/// The plan from the start, to know its steps.
std::vector<Step> StepsOf(const char* text)
{
    std::vector<Fault> faults;
    return MakePlan(ReadAnew(), ParseDesiredState(text, faults), faults).steps;
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
        return std::make_pair(std::make_unique<Variable>(kind, command.empty() ? "nothing" : command),
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
    const std::vector<Step> steps = StepsOf(MANY_STEPS);
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

TEST_F(Apply, TellsWhyAStepHasFailed)
{
    {
        const Variable refused("ZELK_REFUSED", "192.0.2.11");
        const ApplyResult result = Do(MANY_STEPS);
        EXPECT_EQ(Outcome::FAILED, result.outcome);
        const auto failed = std::ranges::find(result.steps, StepOutcome::FAILED, &StepResult::outcome);
        ASSERT_NE(result.steps.end(), failed);
        EXPECT_EQ(1u, failed->exitCode);
        EXPECT_EQ("The parameter is incorrect.\r\n", failed->output);
        EXPECT_EQ(StepOutcome::NOT_RUN, result.steps.back().outcome);
    }
    ApplyOptions options = Within(std::chrono::seconds(5));
    options.watchLibrary = [] { return [] { return std::string("the trace says so"); }; };
    const ApplyResult result = Do(R"({"identity": {"workgroup": "ELSEWHERE"}})", options); // not here
    ASSERT_EQ(Outcome::FAILED, result.outcome) << m_text;
    EXPECT_EQ("TOLVA::SetWorkgroupName failed: the trace says so.", result.steps[0].reason);
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

TEST_F(Apply, EndsACommandThatIsCancelled)
{
    const std::string kernel = Kernel();
    const Variable hang("ZELK_HANG", "index=2");
    bool started = false;
    ApplyOptions options;
    options.progress = [&](const Progress& progress) {
        started = started || (progress.step != nullptr && progress.step->text.ends_with("192.0.2.53"));
    };
    options.isCancelled = [&] { return started; };
    EXPECT_EQ(Outcome::CANCELLED, Do(MANY_STEPS, options).outcome) << m_text;
    EXPECT_EQ(kernel, Kernel());
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

TEST_F(ApplyBeforeVista, ChangesWhatThatSystemCanChange)
{
    constexpr const char* FIRST = R"({"adapters": [{"adapter": "lan0",
        "ipv4": {"addresses": ["192.0.2.10/24"], "gateways": [{"address": "192.0.2.1", "metric": 5}],
                 "dnsServers": ["192.0.2.53", "192.0.2.54"]},
        "routes": [{"destination": "172.16.0.0/12", "nextHop": "192.0.2.9", "metric": 3}]}]})";
    Begin(FIRST);
    const std::string kernel = Kernel();
    for (const char* text : {"lan0 192.0.2.10/24", "default via 192.0.2.1 metric 5",
                             "172.16.0.0/12 via 192.0.2.9 metric 3", "nameserver 192.0.2.53\nnameserver 192.0.2.54\n"})
        EXPECT_TRUE(KernelHas(text)) << text << '\n' << kernel;
    EXPECT_EQ(Outcome::CHANGED, Do(R"({"adapters": [{"adapter": "lan0", "routes": [],
        "ipv4": {"dhcp": true, "gateways": [], "dnsServers": "automatic"}}]})")
                                    .outcome)
        << m_text;
    EXPECT_TRUE(KernelHas("default via 198.18.")) << Kernel();
    EXPECT_EQ(Outcome::CHANGED, Do(FIRST).outcome) << m_text;
    EXPECT_EQ(kernel, Kernel());
}

} // namespace
