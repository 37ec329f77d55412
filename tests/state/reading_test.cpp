// A reading of a Windows made for the test.

#include <algorithm>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <state/fake_windows.h>
#include <state/fields/field.h>
#include <state/reading/read_machine.h>

using namespace zelk;
using testing::ElementsAre;
using testing::HasSubstr;
using testing_support::DwordData;
using testing_support::RegistryData;
using testing_support::StringData;

namespace
{

const Adapter& Named(const Machine& machine, std::string_view name)
{
    const auto found = std::ranges::find(machine.adapters, name, NameOf);
    if (found == machine.adapters.end())
        throw std::runtime_error("no adapter " + std::string(name));
    return *found;
}

std::string TextsOf(const std::vector<Problem>& problems)
{
    std::string text;
    for (const Problem& problem : problems)
        text += std::to_string(problem.code) + ' ' + problem.step + ": " + problem.text + '\n';
    return text;
}

template <class List>
std::string Joined(const std::optional<List>& list)
{
    if (!list)
        return "unknown";
    std::string text;
    for (const auto& item : *list)
        if constexpr (requires { item.ToText(); })
            text += item.ToText() + ' ';
        else
            text += item.address.ToText() + ' ';
    return text;
}

IpAddress Ip(const char* text)
{
    return IpAddress::Parse(text).value();
}

/// One adapter of each sort that a machine can have.
struct Zoo : FakeWindows
{
    Zoo()
    {
        for (ULONG i = 1; i <= 9; ++i)
            adapters.push_back(MakeAdapter(i, L"lan" + std::to_wstring(i)));
        adapters[1].status = IfOperStatusDown; // lan2: no cable
        adapters[1].media = MediaConnectStateDisconnected;
        adapters[2].ipv4 = false;                     // lan3: IPv6 alone
        adapters[3].filter = true;                    // lan4: a filter's
        adapters[4].type = IF_TYPE_SOFTWARE_LOOPBACK; // lan5: the loopback
        adapters[5].hardware = false;                 // lan6: hidden by its driver
        adapters[6].status = IfOperStatusDown;        // lan7: down for another reason
        adapters[7].status = IfOperStatusNotPresent;  // lan8: switched off, and still in the table
        adapters[8].status = IfOperStatusNotPresent;  // lan9: failed
        for (const auto& adapter : adapters)
            if (!adapter.filter && adapter.type != IF_TYPE_SOFTWARE_LOOPBACK)
                AddDevice(adapter, adapter.index == 8 ? 22 : adapter.index == 9 ? 10 : 0);
        AddDevice(MakeAdapter(20, L"off"), 22);
        AddDevice(MakeAdapter(21, L"taken out"), 0, CR_NO_SUCH_DEVNODE);
        AddDevice(MakeAdapter(22, L"broken"), 43);
        devices.push_back({L"PCI\\NEW", L"", 28});
    }

    void AddDevice(const FakeAdapter& adapter, ULONG problem, CONFIGRET result = CR_SUCCESS)
    {
        const std::wstring subkey = std::to_wstring(10000 + adapter.index).substr(1);
        Install(adapter, subkey);
        devices.push_back({L"PCI\\" + subkey, subkey, problem, result});
    }
};

TEST(Reading, FindsAdaptersInEveryState)
{
    const Zoo windows;
    const Machine machine = ReadMachine();
    const struct
    {
        const char* name;
        AdapterStatus status;
        std::optional<bool> enabled, ipv4;
        bool hidden;
    } rows[] = {{"lan1", AdapterStatus::UP, true, true, false},
                {"lan2", AdapterStatus::UNPLUGGED, true, true, false},
                {"lan3", AdapterStatus::UP, true, false, false},
                {"lan5", AdapterStatus::UP, true, true, true},
                {"lan6", AdapterStatus::UP, true, true, true},
                {"lan7", AdapterStatus::DOWN, true, true, false},
                {"lan8", AdapterStatus::DISABLED, false, false, false},
                {"lan9", AdapterStatus::FAILED, true, false, false},
                {"off", AdapterStatus::DISABLED, false, false, false},
                {"taken out", AdapterStatus::NOT_PRESENT, std::nullopt, false, false},
                {"broken", AdapterStatus::FAILED, true, false, false},
                {"A device", AdapterStatus::FAILED, true, false, false}};
    EXPECT_EQ(std::size(rows), machine.adapters.size()) << "the filter's is none";
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        const Adapter& adapter = Named(machine, row.name);
        EXPECT_EQ(row.status, adapter.status);
        EXPECT_EQ(row.enabled, adapter.enabled);
        EXPECT_EQ(row.ipv4, adapter.ipv4.enabled);
        EXPECT_EQ(row.hidden, adapter.hidden);
        EXPECT_EQ("", TextsOf(adapter.problems));
    }
    EXPECT_EQ((DeviceProblem{28, "The drivers of the device are not installed."}),
              Named(machine, "A device").deviceProblem);
    EXPECT_EQ("", TextsOf(machine.problems));
    EXPECT_TRUE(machine == ReadMachine()) << "two readings of the same machine";
}

TEST(Reading, SeesNothingInUseOfADisabledAdapter)
{
    const Zoo windows;
    const Machine machine = ReadMachine();
    for (const char* const name : {"lan8", "off"})
    {
        const Adapter& adapter = Named(machine, name);
        EXPECT_EQ("", Joined(adapter.ipv4.addresses));
        EXPECT_EQ(std::vector<Route>(), adapter.routes);
        EXPECT_EQ("unknown", Joined(adapter.ipv6.configured.addresses)) << "there is nothing to conclude from";
    }
}

TEST(Reading, TellsWhoAnAdapterIs)
{
    Zoo windows;
    windows.Set(CONTROL + L"Class" + NETWORK + L"0001", L"*SpeedDuplex", StringData(L"6"));
    windows.Set(CONTROL + L"Class" + NETWORK + L"0001\\Ndi\\params\\*SpeedDuplex\\Enum", L"6", StringData(L"1.0 Gbps"));
    windows.Set(CONTROL + L"Class" + NETWORK + L"0001", L"NetworkAddress", StringData(L"020000000001"));
    const Machine machine = ReadMachine();
    const Adapter& adapter = Named(machine, "lan1");
    EXPECT_EQ(1U, adapter.index);
    EXPECT_EQ("{00000001-1111-2222-3333-444455556666}", adapter.guid->ToText());
    EXPECT_EQ("02-00-00-00-00-01", adapter.hardwareAddress->ToText());
    EXPECT_EQ("0001", adapter.classKey);
    EXPECT_EQ("PCI\\0001", adapter.deviceInstance);
    EXPECT_EQ("Driver of lan1", adapter.driver.description);
    EXPECT_EQ("12.19.1.37", adapter.driver.version);
    EXPECT_EQ("2022-04-21", adapter.driver.date);
    EXPECT_EQ("1.0 Gbps", adapter.driver.speedDuplex);
    EXPECT_EQ("02-00-00-00-00-01", adapter.driver.hardwareAddress->ToText());
    EXPECT_EQ(AdapterKind::PHYSICAL, adapter.kind);
    EXPECT_EQ(1000000000U, adapter.transmitSpeed);
    EXPECT_EQ(1500U, adapter.mtu);
    EXPECT_EQ(25U, adapter.ipv4.metric);
    EXPECT_EQ(1400U, adapter.ipv4.mtu);
    EXPECT_FALSE(Named(machine, "lan2").transmitSpeed) << "without a link";
}

/// A static adapter and a DHCP client, as Windows keeps them.
struct Office : FakeWindows
{
    Office()
    {
        adapters = {MakeAdapter(3, L"static"), MakeAdapter(5, L"client")};
        adapters[0].addresses = {{"192.0.2.10/24"},
                                 {"2001:db8::10/64"},
                                 {"2001:db8::77/64", IpPrefixOriginManual, IpSuffixOriginManual, 3600},
                                 {"fe80::1/64", IpPrefixOriginWellKnown, IpSuffixOriginLinkLayerAddress}};
        adapters[0].dnsServers = {"192.0.2.53", "2001:db8::53", "192.0.2.54"};
        adapters[1].dhcp = true;
        adapters[1].dhcpServer = "198.51.100.1";
        adapters[1].addresses = {
            {"198.51.100.7/25", IpPrefixOriginDhcp, IpSuffixOriginDhcp, 600},
            {"2001:db8:1::a/64", IpPrefixOriginRouterAdvertisement, IpSuffixOriginLinkLayerAddress, 600},
            {"2001:db8:1::b/64", IpPrefixOriginRouterAdvertisement, IpSuffixOriginRandom, 60, IpDadStateDeprecated}};
        routes = {{"0.0.0.0/0", "192.0.2.1", 3, 5},
                  {"0.0.0.0/0", "198.51.100.1", 5, 0, RouteProtocolNetMgmt, NlroDHCP},
                  {"192.0.2.0/24", "0.0.0.0", 3, 256, RouteProtocolLocal},
                  {"198.18.0.0/15", "192.0.2.2", 3, 1},
                  {"::/0", "fe80::ff", 3, 16},
                  {"203.0.113.0/24", "192.0.2.9", 99, 1}};
        Install(adapters[0], L"0003");
        Install(adapters[1], L"0005");
        Store();
    }

    void Store()
    {
        const std::wstring key = Ipv4Key(adapters[0]);
        Set(key, L"IPAddress", ListData({L"192.0.2.10", L"192.0.2.11"}));
        Set(key, L"SubnetMask", ListData({L"255.255.255.0", L"255.255.255.128"}));
        Set(key, L"DefaultGateway", ListData({L"192.0.2.1"}));
        Set(key, L"DefaultGatewayMetric", ListData({L"5"}));
        Set(key, L"NameServer", StringData(L"192.0.2.53, 192.0.2.54"));
        Set(key, L"Domain", StringData(L"example.net"));
        Set(key, L"InterfaceMetric", DwordData(10));
        Set(key, L"IPAutoconfigurationEnabled", DwordData(0));
        Set(Ipv6Key(adapters[0]), L"NameServer", StringData(L"2001:db8::53"));
        const std::wstring client = Ipv4Key(adapters[1]);
        Set(client, L"IPAddress", ListData({L"10.9.9.9"})); // from before it was a client
        Set(client, L"SubnetMask", ListData({L"255.0.0.0"}));
        Set(client, L"NameServer", StringData(L""));
        Set(client, L"DhcpIPAddress", StringData(L"198.51.100.7"));
        Set(client, L"DhcpSubnetMask", StringData(L"255.255.255.128"));
        Set(client, L"DhcpServer", StringData(L"198.51.100.1"));
        Set(client, L"DhcpDefaultGateway", ListData({L"198.51.100.1"}));
        Set(client, L"DhcpNameServer", StringData(L"198.51.100.53 198.51.100.54"));
        Set(client, L"DhcpDomain", StringData(L"lease.example"));
        Set(client, L"LeaseObtainedTime", DwordData(1700000000));
        Set(client, L"LeaseTerminatesTime", DwordData(1700086400));
        Set(client, L"DhcpNetbiosOptions", DwordData(2));
        const std::wstring routesKey = SERVICES + L"Tcpip\\Parameters\\PersistentRoutes";
        for (const wchar_t* const route : {L"198.18.0.0,255.254.0.0,192.0.2.2,1",
                                           L"198.19.0.0,255.255.0.0,198.51.100.2,3", L"10.0.0.0,255.0.0.0,10.1.1.1,1"})
            Set(routesKey, route, StringData(L""));
    }
};

TEST(Reading, ShowsWhatIsInUseBesideWhatIsConfigured)
{
    const Office windows;
    const Machine machine = ReadMachine();
    const Adapter& adapter = Named(machine, "static");
    EXPECT_EQ("", TextsOf(adapter.problems));
    EXPECT_EQ(false, adapter.ipv4.dhcp);
    EXPECT_EQ("192.0.2.10 ", Joined(adapter.ipv4.addresses));
    EXPECT_EQ("192.0.2.53 192.0.2.54 ", Joined(adapter.ipv4.dnsServers));
    EXPECT_EQ("2001:db8::53 ", Joined(adapter.ipv6.dnsServers));
    EXPECT_EQ("example.org", adapter.ipv4.dnsSuffix);
    EXPECT_EQ((std::vector<Gateway>{{Ip("192.0.2.1"), 5}}), adapter.ipv4.gateways);
    EXPECT_FALSE(adapter.ipv4.lease);

    const ConfiguredIp& configured = adapter.ipv4.configured;
    EXPECT_EQ(false, configured.dhcp);
    EXPECT_EQ(ConfigurationSource::PERSISTENT, configured.source);
    EXPECT_EQ("192.0.2.10/24 192.0.2.11/25 ", Joined(configured.addresses));
    EXPECT_EQ((std::vector<Gateway>{{Ip("192.0.2.1"), 5}}), configured.gateways);
    EXPECT_EQ(AutomaticOr<std::vector<IpAddress>>(std::vector{Ip("192.0.2.53"), Ip("192.0.2.54")}),
              configured.dnsServers);
    EXPECT_EQ("example.net", configured.dnsSuffix);
    EXPECT_EQ(AutomaticOr<std::uint32_t>(10U), configured.metric);
    EXPECT_FALSE(configured.mtu) << "the system keeps it where nobody can read it";
    EXPECT_EQ(false, configured.autoconfiguration);
    EXPECT_EQ(NetbiosSetting::DHCP, configured.netbios);
    EXPECT_EQ(true, adapter.ipv4.netbios);

    EXPECT_EQ(ConfigurationSource::ACTIVE, adapter.ipv6.configured.source);
    EXPECT_EQ("2001:db8::10/64 ", Joined(adapter.ipv6.configured.addresses)) << "one that ends is not stored";
    EXPECT_EQ("fe80::ff ", Joined(adapter.ipv6.configured.gateways));
    EXPECT_EQ(AutomaticOr<std::uint32_t>(35U), adapter.ipv6.configured.metric) << "no automatic one is in use";
    EXPECT_FALSE(adapter.ipv6.configured.dhcp);
}

TEST(Reading, TellsWhatDhcpAndRoutersGave)
{
    const Office windows;
    const Machine machine = ReadMachine();
    const Adapter& adapter = Named(machine, "client");
    EXPECT_EQ("", TextsOf(adapter.problems));
    EXPECT_EQ(true, adapter.ipv4.configured.dhcp);
    EXPECT_EQ("", Joined(adapter.ipv4.configured.addresses)) << "a client ignores what is stored";
    EXPECT_EQ(AutomaticOr<std::vector<IpAddress>>(), adapter.ipv4.configured.dnsServers);
    ASSERT_TRUE(adapter.ipv4.lease);
    const Lease& lease = *adapter.ipv4.lease;
    EXPECT_EQ("198.51.100.7/25", lease.address->ToText());
    EXPECT_EQ(Ip("198.51.100.1"), lease.server);
    EXPECT_EQ(1700000000, lease.obtained->time_since_epoch().count());
    EXPECT_EQ(1700086400, lease.expires->time_since_epoch().count());
    EXPECT_EQ("198.51.100.1 ", Joined(lease.gateways));
    EXPECT_EQ("198.51.100.53 198.51.100.54 ", Joined(lease.dnsServers));
    EXPECT_EQ("lease.example", lease.dnsSuffix);
    const Address& leased = adapter.ipv4.addresses->at(0);
    EXPECT_EQ(AddressOrigin::DHCP, leased.origin);
    EXPECT_EQ(25, leased.prefixLength);
    EXPECT_EQ(Lifetime{600}, leased.validLifetime);
    EXPECT_EQ(AddressOrigin::ROUTER, adapter.ipv6.addresses->at(0).origin);
    EXPECT_EQ(AddressOrigin::RANDOM, adapter.ipv6.addresses->at(1).origin);
    EXPECT_EQ(DadState::DEPRECATED, adapter.ipv6.addresses->at(1).dadState);
    EXPECT_EQ(AddressOrigin::LINK_LAYER, Named(machine, "static").ipv6.addresses->at(2).origin);
}

TEST(Reading, SaysInWhichStoreRoutesAre)
{
    const Office windows;
    const Machine machine = ReadMachine();
    std::vector<std::string> lines;
    for (const Adapter& adapter : machine.adapters)
        for (const Route& route : adapter.routes.value())
            lines.push_back(NameOf(adapter) + ' ' + route.destination.ToText() + ' ' + route.nextHop.ToText() + ' ' +
                            std::to_string(static_cast<int>(route.store)));
    EXPECT_THAT(lines, ElementsAre("static 0.0.0.0/0 192.0.2.1 2", "static 192.0.2.0/24 0.0.0.0 0",
                                   "static 198.18.0.0/15 192.0.2.2 2", "static ::/0 fe80::ff 0",
                                   "client 0.0.0.0/0 198.51.100.1 0", "client 198.19.0.0/16 198.51.100.2 1"));
    ASSERT_EQ(1U, machine.unassignedRoutes.size());
    EXPECT_EQ("10.0.0.0/8", machine.unassignedRoutes[0].destination.ToText());
}

TEST(Reading, AsksEachTableOnceAndOfEachAdapterTheSame)
{
    const auto CallsFor = [](ULONG count) {
        FakeWindows windows;
        for (ULONG i = 1; i <= count; ++i)
        {
            windows.adapters.push_back(MakeAdapter(i, L"lan" + std::to_wstring(i)));
            windows.adapters.back().addresses = {{"192.0.2.10/24"}};
            windows.routes.push_back({"198.18.0.0/15", "192.0.2.1", i, 1});
            const std::wstring subkey = std::to_wstring(10000 + i).substr(1);
            windows.Install(windows.adapters.back(), subkey);
            windows.devices.push_back({L"PCI\\" + subkey, subkey});
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
    for (FakeAdapter& adapter : windows.adapters)
    {
        adapter.length = offsetof(IP_ADAPTER_ADDRESSES, TransmitLinkSpeed);
        adapter.unicastLength = offsetof(IP_ADAPTER_UNICAST_ADDRESS, OnLinkPrefixLength);
    }
    const Machine machine = ReadMachine();
    EXPECT_EQ(BackEnd::PRE_VISTA, machine.environment.backEnd);
    EXPECT_EQ("", TextsOf(machine.problems));
    const Adapter& adapter = Named(machine, "static");
    const Address& address = adapter.ipv4.addresses->at(0);
    EXPECT_EQ(24, address.prefixLength) << "from the older table";
    EXPECT_EQ(64, adapter.ipv6.addresses->at(0).prefixLength) << "of the longest prefix that fits";
    EXPECT_EQ(AddressOrigin::MANUAL, address.origin);
    EXPECT_FALSE(address.dadState);
    EXPECT_FALSE(adapter.ipv4.metric);
    EXPECT_EQ(100000000U, adapter.transmitSpeed);
    EXPECT_EQ(true, adapter.mediaConnected);
    EXPECT_EQ("192.0.2.1 ", Joined(adapter.ipv4.gateways)) << "its own address is none";
    EXPECT_FALSE(adapter.ipv6.gateways) << "there is no table of them";
    EXPECT_EQ(AutomaticOr<std::uint32_t>(), adapter.ipv4.configured.mtu);
    EXPECT_EQ(Ip("198.51.100.1"), Named(machine, "client").ipv4.lease->server) << "from the registry";
    EXPECT_EQ(0, windows.calls["GetIfTable2"] + windows.calls["GetIpForwardTable2"]);
}

TEST(BadInput, TablesThatGrowBetweenTwoCalls)
{
    for (const ULONG version : {10U, 5U})
    {
        Office windows;
        windows.majorVersion = version;
        windows.growths = 3;
        windows.routes.resize(4);
        const Machine machine = ReadMachine();
        EXPECT_EQ("", TextsOf(machine.problems));
        EXPECT_EQ(2U, machine.adapters.size());
        EXPECT_EQ(4, windows.calls["GetAdaptersAddresses"]);
    }
    Office windows;
    windows.growths = 1000;
    const Machine machine = ReadMachine();
    EXPECT_THAT(TextsOf(machine.problems), HasSubstr("111 GetAdaptersAddresses: "));
    EXPECT_EQ("unknown", Joined(Named(machine, "static").ipv4.addresses)) << "and not none";
    EXPECT_EQ("192.0.2.10/24 192.0.2.11/25 ", Joined(Named(machine, "static").ipv4.configured.addresses));
}

TEST(BadInput, RegistryValuesThatGrowBetweenTwoCalls)
{
    Office windows;
    const Machine before = ReadMachine();
    windows.valuesHaveGrown = true;
    EXPECT_TRUE(before == ReadMachine());
}

TEST(BadInput, RegistryValuesOfTheWrongType)
{
    const struct
    {
        const wchar_t* name;
        RegistryData data;
        bool (*isUnknown)(const ConfiguredIp&);
    } rows[] = {
        {L"EnableDHCP", StringData(L"0"), [](const ConfiguredIp& ip) { return !ip.dhcp; }},
        {L"EnableDHCP", {REG_DWORD, {0, 0, 0}}, [](const ConfiguredIp& ip) { return !ip.dhcp; }},
        {L"IPAddress", StringData(L"192.0.2.10"), [](const ConfiguredIp& ip) { return !ip.addresses; }},
        {L"IPAddress", ListData({L"192.0.2.300"}), [](const ConfiguredIp& ip) { return !ip.addresses; }},
        {L"SubnetMask", ListData({L"255.0.255.0"}), [](const ConfiguredIp& ip) { return !ip.addresses; }},
        {L"SubnetMask", DwordData(1), [](const ConfiguredIp& ip) { return !ip.addresses; }},
        {L"DefaultGateway", StringData(L"192.0.2.1"), [](const ConfiguredIp& ip) { return !ip.gateways; }},
        {L"NameServer", DwordData(0), [](const ConfiguredIp& ip) { return !ip.dnsServers; }},
        {L"NameServer", StringData(L"one,two"), [](const ConfiguredIp& ip) { return !ip.dnsServers; }},
        {L"InterfaceMetric", {REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0}}, [](const ConfiguredIp& ip) { return !ip.metric; }},
        {L"IPAutoconfigurationEnabled", StringData(L""), [](const ConfiguredIp& ip) { return !ip.autoconfiguration; }},
    };
    for (const auto& row : rows)
    {
        Office windows;
        SCOPED_TRACE(testing::PrintToString(row.name));
        const Machine before = ReadMachine();
        windows.Set(Ipv4Key(windows.adapters[0]), row.name, row.data);
        const Machine machine = ReadMachine();
        const Adapter& adapter = Named(machine, "static");
        EXPECT_TRUE(row.isUnknown(adapter.ipv4.configured)) << "made sense of it";
        ASSERT_EQ(1U, adapter.problems.size());
        EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), adapter.problems[0].code);
        EXPECT_EQ(adapter.ipv4.addresses, Named(before, "static").ipv4.addresses);
        EXPECT_TRUE(Named(machine, "client") == Named(before, "client"));
    }
}

TEST(BadInput, AnAdapterThatGoesAway)
{
    struct
    {
        const char* what;
        std::wstring FakeWindows::*fault;
        DWORD code;
    } const rows[] = {{"deleted while it is read", &FakeWindows::goneKey, ERROR_KEY_DELETED},
                      {"not to be opened", &FakeWindows::deniedKey, ERROR_ACCESS_DENIED}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        Office windows;
        const Machine before = ReadMachine();
        windows.*row.fault = Ipv4Key(windows.adapters[0]);
        const Machine machine = ReadMachine();
        const Adapter& adapter = Named(machine, "static");
        EXPECT_THAT(TextsOf(adapter.problems), HasSubstr(std::to_string(row.code) + " SYSTEM"));
        EXPECT_FALSE(adapter.ipv4.configured.dnsServers) << "which is not automatic";
        EXPECT_FALSE(adapter.ipv4.configured.addresses);
        EXPECT_EQ("192.0.2.10 ", Joined(adapter.ipv4.addresses));
        EXPECT_TRUE(Named(machine, "client") == Named(before, "client"));
    }
    Office windows;
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, Ipv4Key(windows.adapters[0]).c_str());
    const Machine machine = ReadMachine();
    EXPECT_THAT(TextsOf(Named(machine, "static").problems), HasSubstr("2 SYSTEM"));
    EXPECT_FALSE(Named(machine, "static").ipv4.configured.dnsServers);
}

TEST(BadInput, EverySourceMayFailAndTheOthersAreRead)
{
    for (const char* const function : {"GetIfTable2", "GetIpInterfaceTable", "GetIpForwardTable2",
                                       "SetupDiGetClassDevs", "SetupDiEnumDeviceInfo", "GetAdaptersAddresses"})
    {
        SCOPED_TRACE(function);
        Office windows;
        windows.failures[function] = ERROR_ACCESS_DENIED;
        const Machine machine = ReadMachine();
        EXPECT_THAT(TextsOf(machine.problems), HasSubstr("5 " + std::string(function) + ": "));
        EXPECT_FALSE(machine.problems[0].systemMessage.empty());
        ASSERT_EQ(2U, machine.adapters.size());
        EXPECT_EQ(true, Named(machine, "client").ipv4.configured.dhcp);
    }
    Office windows;
    windows.failures["GetAdaptersAddresses"] = ERROR_ACCESS_DENIED;
    windows.deniedKey = L"Control\\Class";
    EXPECT_THROW(ReadMachine(), StateError);
}

/// Every member of the object, and of those within it, by its place. Lists are one value.
void AddLeaves(const std::string& place, const Json& json, std::map<std::string, Json>& leaves)
{
    for (const auto& [key, value] : json.items())
        if (value.is_object())
            AddLeaves(place + '/' + key, value, leaves);
        else if (key != "problems" && key != "description") // whose two sources word it differently
            leaves[place + '/' + key] = value;
}

std::map<std::string, Json> LeavesOf(const Machine& machine)
{
    std::map<std::string, Json> leaves;
    for (const Adapter& adapter : machine.adapters)
        AddLeaves(adapter.guid.value().ToText(), ToJson(adapter), leaves);
    return leaves;
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

/// Whatever single call of the platform fails: what it would have told is unknown, is said to be, and nothing else
/// changes.
class FailedCalls : public testing::TestWithParam<ULONG>
{
};

INSTANTIATE_TEST_SUITE_P(Versions, FailedCalls, testing::Values(10UL, 5UL));

TEST_P(FailedCalls, NeverLookLikeAnotherSetting)
{
    Office windows;
    windows.majorVersion = GetParam();
    const std::map<std::string, Json> known = LeavesOf(ReadMachine());
    int call = 1;
    for (; windows.failAt == 0; ++call)
    {
        windows.failAt = call;
        const Machine machine = ReadMachine();
        std::string problems = TextsOf(machine.problems);
        for (const Adapter& adapter : machine.adapters)
            problems += TextsOf(adapter.problems);
        const std::map<std::string, Json> leaves = LeavesOf(machine);
        EXPECT_TRUE(leaves == known || !problems.empty()) << "call " << call;
        for (const auto& [place, value] : leaves)
            EXPECT_TRUE(known.contains(place) && IsKnownOrLess(value, known.at(place)))
                << "call " << call << ": " << place << " is " << value << '\n'
                << problems;
    }
    EXPECT_LT(100, call);
}

} // namespace
