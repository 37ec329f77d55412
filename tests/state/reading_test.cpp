// A reading of a Windows made for the test.

#include <algorithm>
#include <map>
#include <random>

#include <gtest/gtest.h>
#include <process.h>

#include <state/desired/export.h>
#include <state/desired/json_form.h>
#include <state/fake_windows.h>
#include <state/fields/schema.h>
#include <state/plan/plan.h>
#include <state/platform/utf8.h>
#include <state/reading/read_anew.h>
#include <state/reading/read_machine.h>
#include <support/files.h>
#include <support/golden.h>
#include <support/registry_json.h>

using namespace zelk;
using testing_support::DataOf;
using testing_support::DwordData;
using testing_support::RegistryData;
using testing_support::SetValue;
using testing_support::Wide;

namespace
{

std::string ProblemsOf(const Machine& machine)
{
    std::vector<Problem> problems = machine.problems;
    for (const Adapter& adapter : machine.adapters)
        problems.insert(problems.end(), adapter.problems.begin(), adapter.problems.end());
    std::string text;
    for (const Problem& problem : problems)
        text += std::to_string(problem.code) + ' ' + problem.step + ": " + problem.text + '\n';
    return text;
}

/// Every member of an object, and of those within it, by its place. Lists are one value.
using Leaves = std::map<std::string, Json>;

void AddLeaves(const std::string& place, const Json& json, Leaves& leaves)
{
    for (const auto& [key, value] : json.items())
        if (value.is_object())
            AddLeaves(place + '/' + key, value, leaves);
        else if (key != "problems")
            leaves[place + '/' + key] = value;
}

/// Of every adapter, which begins with its GUID's digit.
Leaves LeavesOf(const Machine& machine)
{
    Leaves leaves;
    for (const Adapter& adapter : machine.adapters)
        AddLeaves(adapter.guid ? adapter.guid->ToText().substr(7, 2) : "no GUID", ToJson(adapter), leaves);
    return leaves;
}

/// What the second reading has otherwise than the first.
std::string Changes(const Leaves& before, const Leaves& after)
{
    std::string text;
    for (const auto& [place, value] : before)
        if (const auto now = after.find(place); now == after.end() || now->second != value)
            text += place + ": " + value.dump() + " -> " + (now != after.end() ? now->second.dump() : "gone") + '\n';
    for (const auto& [place, value] : after)
        if (!before.contains(place))
            text += place + ": " + value.dump() + '\n';
    return text;
}

Json ReadLists(const std::wstring& name)
{
    return Json::parse(testing_support::ReadFileBytes(testing_support::BesideProgram(L"golden/state/" + name)));
}

TEST(Reading, FindsAdaptersInEveryState)
{
    const FakeWindows windows(ReadLists(L"zoo.json")); // one adapter of each sort that a machine can have
    const Machine machine = ReadMachine();
    testing_support::Golden golden;
    for (const Adapter& adapter : machine.adapters)
    {
        Json row = ToJson(adapter);
        for (const char* const key : {"ipv4", "ipv6"})
            row[key] = {{"enabled", row[key]["enabled"]},
                        {"addresses", row[key]["addresses"]},
                        {"configured", row[key]["configured"]["addresses"]}};
        golden.Line(NameOf(adapter));
        for (const char* const key : {"status", "enabled", "hidden", "deviceProblem", "ipv4", "ipv6", "routes"})
            golden.Line("   ", key, row[key].dump());
    }
    EXPECT_EQ("", ProblemsOf(machine));
    EXPECT_TRUE(machine == ReadMachine()) << "two readings of the same machine";
}

TEST(Reading, KnowsTheWordsOfTheTablesAndTakesNewOnes)
{
    FakeWindows windows;
    for (int i = 0; i < 8; ++i)
    {
        const std::string number = std::to_string(i + 1);
        FakeAdapter adapter = MakeAdapter(static_cast<ULONG>(i) + 1, "lan");
        adapter.status = static_cast<IF_OPER_STATUS>(i);
        adapter.type = static_cast<IFTYPE>(i % 2 == 0 ? 23 + i : 131);
        adapter.addresses = {{"192.0.2." + number + "/24", static_cast<NL_PREFIX_ORIGIN>(i),
                              static_cast<NL_SUFFIX_ORIGIN>(i), 600, static_cast<NL_DAD_STATE>(i)}};
        adapter.addresses.push_back({"10.0.0.1/8", IpPrefixOriginWellKnown, static_cast<NL_SUFFIX_ORIGIN>(i)});
        adapter.media = static_cast<NET_IF_MEDIA_CONNECT_STATE>(i % 3);
        windows.adapters.push_back(adapter);
        windows.routes.push_back({"10." + number + ".0.0/16", "192.0.2.99", adapter.index, 1,
                                  static_cast<NL_ROUTE_PROTOCOL>(i), static_cast<NL_ROUTE_ORIGIN>(i)});
    }
    testing_support::Golden golden;
    for (const Adapter& adapter : ReadMachine().adapters)
        for (Json row = ToJson(adapter);
             const auto* key : {"type", "status", "hidden", "mediaConnected", "ipv4", "routes"})
            golden.Line(key, (key[0] == 'i' ? row[key]["addresses"] : row[key]).dump());
    wchar_t flat[] = L"EXAMPLE", dns[] = L"example.net", none[] = L"";
    for (int i = 0; i < 21; ++i)
    {
        wchar_t* const dnsName = i < 7 ? dns : i < 14 ? none : nullptr;
        windows.role = {static_cast<DSROLE_MACHINE_ROLE>(i % 7), 0, i < 14 ? flat : none, dnsName, nullptr, {}};
        const Json row = ToJson(ReadMachine())["identity"];
        golden.Line("role", i % 7, row["membership"].dump(), row["workgroup"].dump(), row["domain"].dump());
    }
}

/// Values by their keys.
void Store(const Json& keys)
{
    for (const auto& [key, values] : keys.items())
        for (const auto& [name, value] : values.items())
            SetValue(FromUtf8(key), FromUtf8(name), DataOf(value));
}

/// A static adapter and a DHCP client, as Windows keeps them.
struct Office : FakeWindows
{
    static inline const Json LISTS = ReadLists(L"office.json");

    Office() : FakeWindows(LISTS["machine"]) { Store(LISTS["settings"]); }
};

/// With settings, devices and rows of tables that nobody would have made, drawn from a list.
struct OddOffice : Office
{
    explicit OddOffice(unsigned int seed) : random(seed) { cutSockets = lists["cutSockets"]; }

    void Change()
    {
        majorVersion = Odd("version");
        failures = Odd("failures").get<std::map<std::string, DWORD>>();
        adapters.clear();
        devices.clear();
        routes.resize(6);
        for (const ULONG index : {3UL, 5UL, 7UL})
        {
            FakeAdapter& adapter = adapters.emplace_back(Drawn<FakeAdapter>("adapter"));
            adapter.index = Odd("hasIndex") ? index : 0;
            adapter.guid = Odd("hasGuid") ? MakeAdapter(index, "").guid : std::string(Odd("guid"));
            adapter.dnsServers = {Odd("dnsServer"), Odd("dnsServer")};
            for (const Json& prefixes : lists["addresses"])
                adapter.addresses.emplace_back(Drawn<FakeAddress>("address")).prefix = One(prefixes);
            devices.push_back(Drawn<FakeDevice>("device"));
            for (const Json& family : lists["routes"])
            {
                FakeRoute& route = routes.emplace_back(Drawn<FakeRoute>("route"));
                route.destination = One(family["destinations"]);
                route.nextHop = One(family["nextHops"]);
            }
            StoreSettings(static_cast<wchar_t>(L'0' + index));
        }
    }

    void StoreSettings(wchar_t digit)
    {
        for (const Json& row : lists["registry"])
            for (const Json& name : row["names"])
            {
                std::wstring key = Wide(row["key"]);
                std::ranges::replace(key, L'#', digit);
                const RegistryData data = DataOf(One(row["data"]));
                if (random() % 3 == 0)
                    SetValue(key, Wide(name), data);
            }
    }

    const Json& One(const Json& values) { return values[random() % values.size()]; }
    const Json& Odd(const char* what) { return One(lists[what]); }
    template <class Fake>
    Fake Drawn(const char* what)
    {
        nlohmann::json drawn;
        for (const auto& [key, values] : lists[what].items())
            drawn[key] = One(values);
        return drawn;
    }

    std::mt19937 random;
    const Json lists = ReadLists(L"odd.json");
    const testing_support::RegistryValueScope autoconfiguration{SERVICES + L"Tcpip\\Parameters",
                                                                L"IPAutoconfigurationEnabled", DwordData(0)};
};

TEST(Reading, DescribesAnyMachineSoThatItCanBeKept)
{
    for (unsigned int seed = std::random_device()(), last = seed + 8; seed != last; ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        OddOffice windows(seed);
        for (int i = 0; i < 25; ++i)
        {
            windows.Change();
            const Machine machine = ReadMachine();
            ASSERT_TRUE(machine == ReadMachine()) << ToJson(machine).dump();
            for (const auto& [function, code] : windows.failures) // there is just nothing
                ASSERT_EQ(std::string::npos, ProblemsOf(machine).find(function)) << code;
            std::vector<Fault> faults;
            const Json exported = ToJson(ExportState(machine, ExportedAdapters(machine), true).state);
            const Plan plan = MakePlan(machine, ParseDesiredState(exported.dump(), faults), faults);
            ASSERT_TRUE(faults.empty()) << faults[0].place << ' ' << faults[0].text << '\n' << exported.dump();
            ASSERT_TRUE(plan.differences.empty()) << ToJson(plan).dump() << '\n' << ToJson(machine).dump();
        }
    }
}

/// With the devices of the two, and one that is switched off.
struct OfficeWithDevices : Office
{
    OfficeWithDevices()
    {
        Install(MakeAdapter(7, "off"));
        devices = {{"PCI\\A", "0003"}, {"PCI\\B", "0005"}, {"PCI\\C", "0007", 22}};
    }
};

TEST(Reading, ShowsWhatIsInUseBesideWhatIsConfigured)
{
    const OfficeWithDevices windows;
    const Machine machine = ReadMachine();
    EXPECT_EQ("", ProblemsOf(machine));
    testing_support::Golden golden;
    golden.Line(Changes({}, LeavesOf(machine)));
    golden.Line("of no adapter", ToJson(machine)["unassignedRoutes"].dump());
}

TEST(Reading, AsksEachTableOnceAndOfEachAdapterTheSame)
{
    const auto CallsFor = [](ULONG count) {
        FakeWindows windows;
        for (ULONG i = 1; i <= count; ++i)
        {
            windows.adapters.push_back(MakeAdapter(i, "lan" + std::to_string(i)));
            windows.adapters.back().addresses = {{"192.0.2.10/24"}};
            windows.routes.push_back({"198.18.0.0/15", "192.0.2.1", i, 1});
            windows.Install(windows.adapters.back());
            windows.devices.push_back({"PCI\\" + windows.adapters.back().subkey, windows.adapters.back().subkey});
        }
        windows.calls.clear();
        EXPECT_EQ(count, ReadMachine().adapters.size());
        EXPECT_EQ(1, windows.calls["GetIfTable2"]);
        EXPECT_EQ(2, windows.calls["GetIpForwardTable2"]);
        EXPECT_EQ(2, windows.calls["GetIpInterfaceTable"]);
        EXPECT_EQ(1, windows.calls["SetupDiGetClassDevs"]);
        EXPECT_EQ(static_cast<int>(count), windows.calls["CM_Get_DevNode_Status"]);
        EXPECT_EQ(1, windows.calls["GetAdaptersAddresses"]);
        return windows.AllCalls();
    };
    const int few = CallsFor(4);
    const int many = CallsFor(34);
    EXPECT_EQ(many - few, CallsFor(64) - many);
    EXPECT_GT((many - few) / 30, 5) << "the calls are not counted";
}

TEST(Reading, BeforeVistaUsesWhatThereIs)
{
    Office windows;
    windows.majorVersion = 5;
    windows.routes.resize(4); // IPv4
    windows.routes.push_back({"0.0.0.0/0", "192.0.2.10", 3, 7});
    windows.adapters[1].media = MediaConnectStateDisconnected;
    for (FakeAdapter& adapter : windows.adapters)
        adapter.old = true;
    const Machine machine = ReadMachine();
    EXPECT_EQ(BackEnd::PRE_VISTA, machine.environment.backEnd);
    EXPECT_EQ("", ProblemsOf(machine));
    testing_support::Golden().Line(Changes({}, LeavesOf(machine)));
    EXPECT_EQ(0, windows.calls["GetIfTable2"] + windows.calls["GetIpForwardTable2"]);
}

TEST(BadInput, TablesAndValuesThatGrowBetweenTwoCalls)
{
    for (const ULONG version : {10U, 5U})
    {
        Office windows;
        windows.majorVersion = version;
        windows.routes.resize(4);
        const Machine before = ReadMachine();
        windows.calls.clear();
        windows.growths = 3;
        windows.valuesHaveGrown = true;
        EXPECT_TRUE(before == ReadMachine());
        EXPECT_EQ(4, windows.calls["GetAdaptersAddresses"]);
    }
}

void Spoil(FakeWindows& windows, const Json& fault)
{
    Store(fault.value("settings", Json::object()));
    windows.failures = fault.value("failures", windows.failures);
    windows.growths = fault.value("growths", 0);
    windows.goneKey = FromUtf8(fault.value("goneKey", ""));
    windows.deniedKey = FromUtf8(fault.value("deniedKey", ""));
    if (fault.contains("missingKey"))
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, Wide(fault["missingKey"]).c_str());
}

/// What is not understood is unknown, and said to be; all else is read.
TEST(BadInput, IsAProblemAndLeavesTheRest)
{
    testing_support::Golden golden;
    for (const Json& fault : Office::LISTS["faults"])
    {
        OfficeWithDevices windows;
        const Leaves before = LeavesOf(ReadMachine());
        Spoil(windows, fault);
        const Machine machine = ReadMachine();
        golden.Line("#", fault["what"].get<std::string>());
        golden.Line(ProblemsOf(machine) + Changes(before, LeavesOf(machine)));
    }
    Office windows;
    windows.failures["GetAdaptersAddresses"] = ERROR_ACCESS_DENIED;
    windows.deniedKey = L"Control\\Class";
    EXPECT_THROW(ReadAnew(), StateError);
    const auto patch = PATCH_IMPORT(_beginthreadex, [](auto...) -> std::uintptr_t { return 0; });
    EXPECT_THROW(ReadAnew(), StateError);
}

/// Every record of the value stands somewhere in what is written here; check_schema.py holds it against the schema.
TEST(Reading, IsWrittenAsTheSchemaPromises)
{
    const auto write = [](std::wstring_view name, const Json& json) {
        testing_support::WriteFileBytes(testing_support::BesideProgram(name), json.dump(2) + '\n');
    };
    write(L"machine.schema.json", MachineSchema());
    write(L"real.json", ToJson(ReadMachine()));
    OfficeWithDevices windows;
    SetValue(Ipv4Key(windows.adapters[0]), L"NameServer", DwordData(7));
    write(L"everything.json", ToJson(ReadMachine()));
}

/// Whether what was read tells nothing else than what is known. In use, a route may be stored too.
bool IsKnownOrLess(const Json& value, const Json& known)
{
    if (value.is_null() || value == known || value == "unknown" || (value == "active" && known == "both"))
        return true;
    if (value.is_structured() && value.type() == known.type() && value.size() == known.size())
        return std::equal(value.begin(), value.end(), known.begin(), IsKnownOrLess);
    return false;
}

/// The sources differ, where the second one is asked only if the first one tells nothing.
bool HasTwoSources(const std::string& place)
{
    return place.ends_with("description") || place.ends_with("deviceInstance") || place.ends_with("/name");
}

/// Whatever single call of the platform fails: what it would have told is unknown, is said to be, and nothing else
/// changes.
class FailedCalls : public testing::TestWithParam<ULONG>
{
};

INSTANTIATE_TEST_SUITE_P(Versions, FailedCalls, testing::Values(10UL, 5UL));

TEST_P(FailedCalls, NeverLookLikeAnotherSetting)
{
    OfficeWithDevices windows;
    windows.majorVersion = GetParam();
    const Leaves known = LeavesOf(ReadMachine());
    int call = 1;
    for (; windows.failAt == 0; ++call)
    {
        windows.failAt = call;
        const Machine machine = ReadMachine();
        const std::string problems = ProblemsOf(machine);
        const Leaves leaves = LeavesOf(machine);
        EXPECT_TRUE(leaves == known || !problems.empty()) << "call " << call;
        for (const auto& [place, value] : leaves)
            EXPECT_TRUE(HasTwoSources(place) || value.is_null() ||
                        (known.contains(place) && IsKnownOrLess(value, known.at(place))))
                << "call " << call << ": " << place << " is " << value << '\n'
                << problems;
    }
    EXPECT_LT(100, call);
}

} // namespace
