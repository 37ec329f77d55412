// The JSON form of a reading. What is written here is validated against the schema by check_schema.py.

#include <set>

#include <gtest/gtest.h>

#include <state/fake_windows.h>
#include <state/fields/field.h>
#include <state/fields/schema.h>
#include <state/reading/read_machine.h>
#include <support/files.h>

using namespace zelk;
using testing_support::DwordData;
using testing_support::StringData;

namespace
{

void Write(std::wstring_view name, const Json& json)
{
    testing_support::WriteFileBytes(testing_support::BesideProgram(name), json.dump(2) + '\n');
}

/// Every record of the value stands somewhere in it.
void FillEverything(FakeWindows& windows)
{
    windows.adapters = {MakeAdapter(3, L"lan\"0\u20AC")};
    FakeAdapter& adapter = windows.adapters[0];
    adapter.dhcp = true;
    adapter.addresses = {{"192.0.2.10/24", IpPrefixOriginDhcp, IpSuffixOriginDhcp, 600}, {"2001:db8::10/64"}};
    adapter.dhcpServer = "192.0.2.1";
    windows.Install(adapter, L"0003");
    windows.Install(MakeAdapter(4, L"off"), L"0004");
    windows.devices = {{L"PCI\\A", L"0003"}, {L"PCI\\B", L"0004", 22}};
    windows.routes = {{"0.0.0.0/0", "192.0.2.1", 3, 5}};
    windows.Set(Ipv4Key(adapter), L"DhcpIPAddress", StringData(L"192.0.2.10"));
    windows.Set(Ipv4Key(adapter), L"DhcpSubnetMask", StringData(L"255.255.255.0"));
    windows.Set(Ipv4Key(adapter), L"LeaseObtainedTime", DwordData(1709208000)); // 29 February
    windows.Set(Ipv4Key(adapter), L"DefaultGateway", ListData({L"192.0.2.1"}));
    windows.Set(Ipv4Key(adapter), L"NameServer", DwordData(7));
    windows.Set(SERVICES + L"Tcpip\\Parameters\\PersistentRoutes", L"10.0.0.0,255.0.0.0,10.1.1.1,1", StringData(L""));
}

TEST(Json, WritesWhatTheSchemaPromises)
{
    Write(L"machine.schema.json", MachineSchema());
    Write(L"real.json", ToJson(ReadMachine()));
    FakeWindows windows;
    FillEverything(windows);
    const Json machine = ToJson(ReadMachine());
    Write(L"everything.json", machine);

    const Json& adapter = machine["adapters"][0];
    EXPECT_EQ("lan\"0\xE2\x82\xAC", adapter["name"]);
    EXPECT_EQ("up", adapter["status"]);
    EXPECT_EQ("02-00-00-00-00-03", adapter["hardwareAddress"]);
    const Json& ipv4 = adapter["ipv4"];
    EXPECT_EQ(Json::parse(R"([{"address": "192.0.2.10", "prefixLength": 24, "origin": "dhcp", "dadState": "preferred",
                               "validLifetime": 600, "preferredLifetime": 600}])"),
              ipv4["addresses"]);
    EXPECT_EQ("2024-02-29T12:00:00Z", ipv4["lease"]["obtained"]);
    EXPECT_EQ(nullptr, ipv4["lease"]["expires"]);
    EXPECT_EQ(Json::parse(R"([{"address": "192.0.2.1", "metric": null}])"), ipv4["configured"]["gateways"]);
    EXPECT_EQ(nullptr, ipv4["configured"]["dnsServers"]) << "unreadable is not automatic";
    EXPECT_EQ("automatic", adapter["ipv6"]["configured"]["dnsServers"]);
    EXPECT_EQ("infinite", adapter["ipv6"]["addresses"][0]["validLifetime"]);
    EXPECT_EQ("both", adapter["routes"][0]["store"]);
    EXPECT_EQ(Json::parse(R"({"code": 22, "text": "The device is disabled."})"),
              machine["adapters"][1]["deviceProblem"]);
}

TEST(Fields, HaveEachTheirOwnKeyAndWords)
{
    std::set<std::string> keys;
    for (const Field<Adapter>& field : FieldsOf<Adapter>())
    {
        EXPECT_TRUE(keys.insert(field.key).second) << field.key;
        EXPECT_TRUE(std::string_view(field.help).ends_with('.')) << field.key;
    }
    EXPECT_STREQ("status", FieldsOf<Adapter>().fields[1].key);
    EXPECT_STREQ("Lower layer down", FieldsOf<Adapter>().fields[1].labelOfWord("lowerLayerDown"));
    EXPECT_EQ(AddressOrigin::LINK_LAYER, ParseWord<AddressOrigin>("linkLayer"));
    EXPECT_FALSE(ParseWord<AddressOrigin>("LinkLayer"));
}

} // namespace
