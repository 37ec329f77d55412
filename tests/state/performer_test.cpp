// Single steps on a platform and a library that fail: a network configuration of which each call fails in turn, the
// library's operations, the registry.

#include <array>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <winsock2.h>

#include <windows.h>

#include <objbase.h>

#include <state/apply/performer.h>
#include <state/apply/stored_form.h>
#include <state/desired/json_form.h>
#include <state/fake_windows.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <support/files.h>
#include <support/golden.h>
#include <support/import_patch.h>
#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

using namespace zelk;

namespace
{

/// By the interface and the place in its table of functions: the name, and what it gives in which argument.
const Json METHODS = Json::parse(
    testing_support::ReadFileBytes(testing_support::BesideProgram(L"golden/state/network_configuration.json")));

/// Two paths lead down from IPv6, of two steps each: to another adapter, and through a filter to the one asked for.
class NetworkConfiguration
{
public:
    NetworkConfiguration(std::size_t failing, HRESULT failure) : m_failing(failing), m_failure(failure)
    {
        pThis = this;
    }

    HRESULT Give(const std::string& kind, std::size_t place, void* out)
    {
        ++references;
        static const auto functions = MakeFunctions(std::make_index_sequence<11>());
        *static_cast<Object**>(out) = &m_objects.emplace_back(Object{functions.data(), kind, place, 0});
        return S_OK;
    }

    std::string calls; ///< with "!" behind the one that has failed
    ULONG references = 0;

private:
    struct Object
    {
        void* const* functions;
        std::string kind;  ///< its interface
        std::size_t place; ///< the path, or the step
        std::size_t next;
    };

    template <std::size_t SLOT>
    static HRESULT WINAPI Called(Object& object, void* first, void* second)
    {
        const Json& method = METHODS.at(object.kind).at(std::to_string(SLOT));
        const bool fails = ++pThis->m_count == pThis->m_failing;
        pThis->calls += ' ' + method["name"].get<std::string>() + (fails ? "!" : "");
        return fails ? pThis->m_failure : pThis->Do(method, object, first, second);
    }
    static ULONG WINAPI Release(Object&) { return --pThis->references; }

    HRESULT Do(const Json& method, Object& object, void* first, void* second)
    {
        constexpr GUID FIRST_STEP = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
        const bool isNext = method["name"] == "Next";
        if (isNext && object.next == 2)
            return S_FALSE;
        if (method["name"] == "GetInstanceGuid")
            (*static_cast<GUID*>(first) = FIRST_STEP).Data1 += static_cast<DWORD>(object.place);
        if (!method.contains("gives"))
            return S_OK;
        const std::size_t place = isNext ? 2 * object.place + object.next++ : object.place;
        return Give(method["gives"], place, method["in"] == 1 ? first : second);
    }

    template <std::size_t... SLOTS>
    static std::array<void*, sizeof...(SLOTS)> MakeFunctions(std::index_sequence<SLOTS...>)
    {
        std::array functions = {reinterpret_cast<void*>(&Called<SLOTS>)...};
        functions[2] = reinterpret_cast<void*>(&Release);
        return functions;
    }

    static inline NetworkConfiguration* pThis;
    std::deque<Object> m_objects;
    std::size_t m_failing, m_count = 0;
    HRESULT m_failure;
};

constexpr const char* GUID_TEXT = "{00000004-0002-0003-0405-060708090A0B}";

/// What is said of a step of that adapter, or of the machine.
std::string Perform(const Action& action, const Machine& machine = {}, const ApplyOptions& options = {},
                    bool ofAdapter = true)
{
    const Step step = {"", ofAdapter ? Guid::Parse(GUID_TEXT) : std::nullopt, "", action, {}};
    const StepResult result = Performer(options, true).Perform(machine, step);
    return result.outcome == StepOutcome::DONE ? "DONE" : result.reason;
}

} // namespace

TEST(Performer, BindsIpv6OrSaysWhyNotAndLeavesNothing)
{
    testing_support::Golden golden;
    for (const HRESULT failure : {E_ACCESSDENIED, S_FALSE})
        for (std::size_t failing = 1;; ++failing)
        {
            NetworkConfiguration windows(failing, failure);
            const auto patch = PATCH_IMPORT(CoCreateInstance, [&](auto&&, auto&&, auto&&, auto&&, void** object) {
                return windows.Give("INetCfg", 0, object);
            });
            const std::string answer = Perform(Ipv6Binding{failing % 2 == 0});
            const std::size_t end = windows.calls.find('!');
            const std::size_t begin = end != std::string::npos ? windows.calls.rfind(' ', end) : 0;
            golden.Line(windows.calls.substr(begin + 1), answer);
            EXPECT_EQ(0U, windows.references) << windows.calls;
            if (end == std::string::npos)
                break;
        }
    // Wine has none; and COM is set up otherwise on this thread.
    ASSERT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    golden.Line(Perform(Ipv6Binding{true}));
    ::CoUninitialize();
}

/// The library's operations, which only write down how they are called.
struct Library
{
    Library()
    {
        using NicInfo = TOLVA::NIC_INFO;
        using Address = TOLVA::HARDWARE_ADDRESS;
        using Name = velmor::string;
#define ANSWER(function, ...)                                                                                          \
    patches.Add<bool (*)(__VA_ARGS__)>(function, [this](const auto&... arguments) {                                    \
        called = testing_support::Show(arguments...);                                                                  \
        return works;                                                                                                  \
    })
        ANSWER("_ZN5TOLVA13EnableAdapterERKNS_8NIC_INFOE", const NicInfo&);
        ANSWER("_ZN5TOLVA14DisableAdapterERKNS_8NIC_INFOE", const NicInfo&);
        ANSWER("_ZN5TOLVA18SetHardwareAddressERKNS_8NIC_INFOERKNS_16HARDWARE_ADDRESSE", const NicInfo&, const Address&);
        ANSWER("_ZN5TOLVA16SetComputerNameWERKN6velmor6stringE", const Name&);
        ANSWER("_ZN5TOLVA19SetPrimaryDnsSuffixERKN6velmor6stringE", const Name&);
        ANSWER("_ZN5TOLVA16SetWorkgroupNameERKN6velmor6stringE", const Name&);
    }

    testing_support::ImportPatches patches;
    std::string called;
    bool works = true;
};

TEST(Performer, CallsTheLibraryAndAwaitsTheDevice)
{
    FakeAdapter adapter = MakeAdapter(3, "lan");
    adapter.guid = GUID_TEXT;
    std::optional<FakeWindows> windows(std::in_place);
    windows->Install(adapter);
    const Machine machine = ReadMachine();
    Library library;
    testing_support::Golden golden;
    ApplyOptions options;
    for (const auto& [operation, argument] : {std::pair(LibraryOperation::DISABLE_ADAPTER, ""),
                                              {LibraryOperation::SET_HARDWARE_ADDRESS, ""},
                                              {LibraryOperation::SET_HARDWARE_ADDRESS, "02-00-5E-10-00-09"},
                                              {LibraryOperation::SET_COMPUTER_NAME, "pc"},
                                              {LibraryOperation::SET_PRIMARY_DNS_SUFFIX, "example.com"},
                                              {LibraryOperation::SET_WORKGROUP_NAME, "group"}})
        for (const bool works : {true, false})
        {
            options.timeout = {};
            options.watchLibrary = [] { return [] { return std::string("its trace says why"); }; };
            library.works = works;
            const bool ofAdapter = operation < LibraryOperation::SET_COMPUTER_NAME;
            golden.Line(Perform(LibraryCall{operation, argument}, machine, options, ofAdapter), library.called);
        }

    const LibraryCall enable = {LibraryOperation::ENABLE_ADAPTER, ""};
    golden.Line(Perform(enable), "(it has gone)");
    golden.Line(Perform(enable, machine), "(nobody watches)");
    library.works = true;
    options.timeout = std::chrono::hours(1);
    int looks = 0;
    options.isCancelled = [&] {
        if (++looks == 3)
            windows->adapters = {adapter};
        return looks > 3;
    };
    golden.Line(Perform(enable, machine, options), library.called, looks, "looks until it is there");
    windows->adapters.clear();
    golden.Line(Perform(enable, machine, options), looks, "looks until the user cancels");
    windows.emplace();
    options.timeout = {};
    options.isCancelled = {};
    golden.Line(Perform(enable, machine, options), "though it never comes");
}

/// Where `failing` is its name, the function gives this result and fails for want of memory.
#define PATCH_CALL(Function, ...)                                                                                      \
    PATCH_IMPORT(Function,                                                                                             \
                 [&](decltype(&::Function) original, auto... arguments) -> decltype(original(arguments...)) {          \
                     ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);                                                          \
                     return failing == #Function ? __VA_ARGS__ : original(arguments...);                               \
                 })

TEST(Performer, SaysWhichCallFailed)
{
    const FakeWindows windows;
    std::string failing;
    const auto create = PATCH_CALL(RegCreateKeyExW, ERROR_ACCESS_DENIED);
    const auto set = PATCH_CALL(RegSetValueExW, ERROR_ACCESS_DENIED);
    const auto remove = PATCH_CALL(RegDeleteValueW, ERROR_ACCESS_DENIED);
    const auto directory = PATCH_CALL(GetSystemDirectoryW, 0);
    const auto pipe = PATCH_CALL(CreatePipe, FALSE);
    const auto job = PATCH_CALL(CreateJobObjectW, nullptr);
    const auto assignment = PATCH_CALL(AssignProcessToJobObject, FALSE);
    const auto resumption = PATCH_CALL(ResumeThread, ~DWORD());
    const auto route = [](std::uint32_t metric, bool wanted) {
        return StoredRoute{*IpPrefix::Parse("10.9.0.0/16"), *IpAddress::Parse("192.0.2.9"), metric, wanted};
    };
    testing_support::Golden golden;
    for (const char* const function : {"RegSetValueExW", "", "RegDeleteValueW", "RegCreateKeyExW"})
    {
        failing = function;
        for (const Action& action : {Action(route(1, true)), Action(route(2, true)), Action(route(2, false)),
                                     Action(StoredSetting{"example.com"})})
            golden.Line(function, Perform(action));
    }
    for (const char* const function : {"GetSystemDirectoryW", "CreatePipe", "CreateJobObjectW",
                                       "AssignProcessToJobObject", "ResumeThread", "nothing"})
    {
        failing = function;
        golden.Line(function, "fails:", Perform(Command{Program::NETSH, {"help"}}));
    }
}

TEST(StoredForm, BringsBackEveryValueToTheLetter)
{
    using testing_support::DwordData, testing_support::StringData;
    const auto targetOf = [](const char* guid) { return Target{*Guid::Parse(guid), {}, {}, {}}; };
    const std::vector<Target> targets = {targetOf("{00000001-1111-2222-3333-444455556666}"),
                                         targetOf("{00000002-1111-2222-3333-444455556666}")};
    const auto keyOf = [](const Target& target) { return IPV4_INTERFACES + FromUtf8(target.guid.ToText()); };
    const testing_support::RegistryKeyScope key(keyOf(targets[0]));
    std::optional<testing_support::RegistryKeyScope> gone(keyOf(targets[1]));
    const std::map<std::wstring, testing_support::RegistryData> before = {
        {L"EnableDHCP", DwordData(0)},
        {L"IPAddress", testing_support::ListData({L"192.0.2.1"})},
        {L"NameServer", StringData(L"")},
        {L"Domain", StringData(L"example.org")},
        {L"MTU", {}}};
    for (const auto& [name, data] : before)
        key.Set(L"", name, data);
    gone->Set(L"", L"Domain", StringData(L"example.org"));

    const StoredForm form(targets);
    ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, key.Path().c_str(), L"IPAddress");
    key.Set(L"", L"EnableDHCP", DwordData(1));
    key.Set(L"", L"NameServer", StringData(L"", REG_EXPAND_SZ));
    key.Set(L"", L"MTU", DwordData(1400));
    gone.reset();
    EXPECT_TRUE(form.Restore());
    for (const auto& [name, data] : before)
        EXPECT_EQ(data, key.Get(L"", name)) << ToUtf8(name);
    EXPECT_FALSE(form.Restore());
    EXPECT_EQ(testing_support::RegistryData(),
              testing_support::RegistryKeyScope(keyOf(targets[1])).Get(L"", L"Domain"));
}

TEST(Apply, SaysWhyItDidNothingOrNotAll)
{
    FakeWindows windows;
    windows.Install(MakeAdapter(3, "lan"));
    Machine machine = ReadMachine();
    const Library library;
    std::vector<Fault> faults;
    const Plan plan =
        MakePlan(machine, ParseDesiredState(R"({"adapters": [{"adapter": "lan", "enabled": false}]})", faults), faults);
    int left = 0;
    ApplyOptions options;
    options.isCancelled = [&] { return left-- <= 0; };
    testing_support::Golden golden;
    const auto line = [&](const char* what, const Plan& wanted) {
        const ApplyResult result = Apply(machine, wanted, options);
        golden.Line(what, WordOf(result.outcome), result.undo ? "undone" : "", result.changed ? "changed" : "");
    };
    line("cancelled before the first step:", plan);
    left = 1;
    line("cancelled after the last one:", plan);
    options.timeout = {};
    options.isCancelled = {};
    line("done, but not so:", plan);
    line("differs, and no step is known:", Plan{plan.targets, plan.identity, plan.differences, {}, {}});
    machine.environment.elevated = false;
    line("as a user:", plan);
}
