// The engine on the real registry of a private Wine and the kernel of a network namespace, which a stand-in for netsh
// changes. What it says is compared with what the kernel says.

#include <algorithm>
#include <future>
#include <random>

#include <gtest/gtest.h>

#include <e2e/unix_command.h>
#include <state/apply/apply.h>
#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <support/registry_scope.h>

using namespace zelk;

namespace
{

/// Addresses and routes of the links, and the resolver's servers.
std::string Kernel()
{
    std::string output;
    EXPECT_TRUE(RunUnix("for l in lan0 lan1; do ip -o addr show dev $l scope global | awk '{print $2, $4}'; "
                        "ip route show dev $l | sort; ip -6 route show dev $l | sort; done; cat /etc/resolv.conf",
                        output));
    return output;
}

bool KernelHas(const std::string& text)
{
    return Kernel().find(text) != std::string::npos;
}

/// On a thread of its own: this system keeps the resolver's servers for each thread.
Machine ReadAnew()
{
    return std::async(std::launch::async, [] { return ReadMachine(); }).get();
}

/// Makes the two links known to the registry as adapters that have nothing yet.
class Apply : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        for (const Adapter& adapter : ReadMachine().adapters)
            if (adapter.friendlyName && adapter.friendlyName->starts_with("lan"))
                Register(FromUtf8(adapter.guid->ToText()), FromUtf8(*adapter.friendlyName));
    }

    void SetUp() override { ASSERT_TRUE(Do(START).open.empty()) << m_text; }

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
        {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.10/24"], "gateways": [{"address": "192.0.2.1", "metric": 5}],
                                     "dnsServers": ["192.0.2.53"]},
         "ipv6": {"addresses": ["2001:db8::10/64"]},
         "routes": [{"destination": "172.16.0.0/12", "nextHop": "192.0.2.9", "metric": 3}]},
        {"adapter": "lan1", "ipv4": {"addresses": ["203.0.113.7/24"], "gateways": []}, "routes": []}]})";
    std::string m_text; ///< the last answer
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
    EXPECT_TRUE(MakePlan(machine, exported.state, faults).items.empty());
    EXPECT_EQ(kernel, Kernel());
}

TEST_F(Apply, ChangesKernelAndRegistryTogether)
{
    const ApplyResult result = Do(R"({"adapters": [{"adapter": "lan0", "ipv4": {
        "addresses": ["192.0.2.10/24", "192.0.2.11/24"], "gateways": [{"address": "192.0.2.2", "metric": 4}],
        "dnsServers": ["192.0.2.54", "192.0.2.53"]}, "ipv6": {"addresses": ["2001:db8::20/64"]}, "routes": []}]})");
    EXPECT_EQ(Outcome::CHANGED, result.outcome) << m_text;
    for (const char* text : {"lan0 192.0.2.10/24", "lan0 192.0.2.11/24", "default via 192.0.2.2 metric 4",
                             "lan0 2001:db8::20/64", "nameserver 192.0.2.54\nnameserver 192.0.2.53\n"})
        EXPECT_TRUE(KernelHas(text)) << text << '\n' << Kernel();
    for (const char* text : {"192.0.2.1 ", "172.16.0.0", "2001:db8::10/64"})
        EXPECT_FALSE(KernelHas(text)) << text << '\n' << Kernel();
}

TEST_F(Apply, BringsBackRoutesThatACommandTakesAway)
{
    const ApplyResult result = Do(R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.20/24"]}}]})");
    EXPECT_EQ(Outcome::CHANGED, result.outcome) << m_text;
    EXPECT_TRUE(KernelHas("default via 192.0.2.1 metric 5")) << Kernel();
    EXPECT_TRUE(KernelHas("172.16.0.0/12 via 192.0.2.9 metric 3")) << Kernel();
}

constexpr const char* MANY_STEPS = R"({"adapters": [
    {"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.10/24", "192.0.2.11/24"], "gateways": [{"address": "192.0.2.2", "metric": 4}],
                                 "dnsServers": ["192.0.2.54", "192.0.2.53"]}, "routes": []},
    {"adapter": "lan1", "ipv4": {"addresses": ["198.51.100.9/24"]}}]})";

TEST_F(Apply, TakesBackWhatWasDoneWhenAStepFails)
{
    const std::string kernel = Kernel();
    for (const char* refused : {"add address \"Connection lan0\" 192.0.2.11",
                                "delete address \"Connection lan0\" gateway=192.0.2.1", "index=2", "198.51.100.9"})
    {
        ::SetEnvironmentVariableA("ZELK_REFUSED", refused);
        const ApplyResult result = Do(MANY_STEPS);
        ::SetEnvironmentVariableA("ZELK_REFUSED", nullptr);
        EXPECT_EQ(Outcome::FAILED, result.outcome) << refused << m_text;
        ASSERT_TRUE(result.undo) << refused;
        EXPECT_TRUE(result.undo->open.empty()) << refused << m_text;
        EXPECT_EQ(kernel, Kernel()) << refused;
        const auto failed = std::ranges::find(result.steps, StepOutcome::FAILED, &StepResult::outcome);
        ASSERT_NE(result.steps.end(), failed);
        EXPECT_EQ(1u, failed->exitCode);
        EXPECT_EQ("The parameter is incorrect.\r\n", failed->output);
    }
}

TEST_F(Apply, EndsACommandThatHangsAndOneThatIsCancelled)
{
    const std::string kernel = Kernel();
    ::SetEnvironmentVariableA("ZELK_HANG", "index=2");
    EXPECT_EQ(Outcome::TIMED_OUT, Do(MANY_STEPS, Within(std::chrono::seconds(4))).outcome) << m_text;
    EXPECT_EQ(kernel, Kernel());
    bool started = false;
    ApplyOptions options;
    options.progress = [&](const Progress& progress) {
        started = started || progress.step->text.ends_with("192.0.2.53");
    };
    options.isCancelled = [&] { return started; };
    EXPECT_EQ(Outcome::CANCELLED, Do(MANY_STEPS, options).outcome) << m_text;
    ::SetEnvironmentVariableA("ZELK_HANG", nullptr);
    EXPECT_EQ(kernel, Kernel());
}

TEST_F(Apply, ReachesWhateverIsWantedAndTheWayBack)
{
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](unsigned int bound) {
        return std::to_string(std::uniform_int_distribution(1u, bound)(random));
    };
    const std::string kernel = Kernel();
    for (int i = 0; i < 6; ++i)
    {
        const std::string gateway = below(3);
        const std::string metric = below(9);
        const std::string state =
            R"({"adapters": [{"adapter": "lan0", "ipv4": {"addresses": ["192.0.2.1)" + below(3) +
            R"(/24", "192.0.2.2)" + below(3) + R"(/24"], "gateways": [{"address": "192.0.2.)" + gateway +
            R"(", "metric": )" + metric + R"(}], "dnsServers": ["198.51.100.)" + below(9) +
            R"("]}, "routes": []}, {"adapter": "lan1", "ipv4": {"addresses": ["203.0.113.)" + below(9) + R"(/24"]}}]})";
        ASSERT_NE(Outcome::NOT_VERIFIED, Do(state).outcome) << m_text;
        ASSERT_TRUE(KernelHas("default via 192.0.2." + gateway + " metric " + metric)) << state << Kernel();
        ASSERT_EQ(Outcome::UNCHANGED, Do(state).outcome) << m_text;
    }
    EXPECT_EQ(Outcome::CHANGED, Do(START).outcome) << m_text;
    EXPECT_EQ(kernel, Kernel());
}

} // namespace
