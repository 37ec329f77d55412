// The real DLL on a network made for the test: what it reports against what the kernel says.

#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <e2e/network.h>
#include <e2e/unix_command.h>
#include <support/printers.h>
#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

using testing_support::StringData;

namespace
{

/// The list, in which every link has to stand exactly once, by its link.
std::vector<std::pair<Link, TOLVA::NIC_INFO>> Listed()
{
    std::vector<TOLVA::NIC_INFO> list;
    EXPECT_TRUE(TOLVA::GetAdapterList(list));
    EXPECT_EQ(3U, list.size());
    std::vector<std::pair<Link, TOLVA::NIC_INFO>> listed;
    for (const Link& link : Links())
        for (const TOLVA::NIC_INFO& NicInfo : list)
            if (NicInfo.sNicGuid == link.sGuid)
                listed.emplace_back(link, NicInfo);
    EXPECT_EQ(3U, listed.size());
    return listed;
}

TEST(Lan, WithoutRegistryKeysARecordIsNameAndGuid)
{
    for (const auto& [link, NicInfo] : Listed())
    {
        EXPECT_EQ(velmor::string(L"\\DEVICE\\TCPIP_") + link.sGuid, NicInfo.sNicName);
        for (const velmor::string* p : {&NicInfo.sNicDesc, &NicInfo.sNicFriendlyName, &NicInfo.sNicEnum,
                                        &NicInfo.sNicPci, &NicInfo.sNicType, &NicInfo.sNicHwAddr})
            EXPECT_TRUE(p->empty()) << p->narrow_c_str();
    }
}

void ExpectRecord(const Link& link, const TOLVA::NIC_INFO& NicInfo)
{
    EXPECT_EQ(velmor::string(("Driver of " + link.sName).c_str()), NicInfo.sNicDesc);
    EXPECT_EQ(velmor::string(link.sName.c_str()), NicInfo.sNicFriendlyName);
    EXPECT_EQ(velmor::string(Seeded::Enum(link)), NicInfo.sNicEnum);
    EXPECT_EQ(velmor::string(L"ETHERNET"), NicInfo.sNicType);
    EXPECT_EQ(velmor::string(link.sHwAddr.c_str()), NicInfo.sNicHwAddr);
    velmor::string sName;
    EXPECT_TRUE(TOLVA::GetAdapterIpconfigName(NicInfo, sName));
    EXPECT_EQ(velmor::string(("Connection " + link.sName).c_str()), sName);
}

TEST(Lan, WithThemItIsCompleteAndAnswersQuestions)
{
    const std::vector<Link> links = Links();
    ASSERT_EQ(3U, links.size());
    const Seeded first(links[0], StringData(L"PCI\\A"),
                       StringData(L"PCI\\OTHER")); // the class key's device comes first
    const Seeded second(links[1], {}, StringData(L"PCI\\B"));
    const Seeded third(links[2], StringData(L"PCI\\C"));
    std::vector<velmor::ip_address> servers;
    for (const std::string sServer : Facts()["dns"])
        servers.emplace_back(velmor::string(sServer.c_str()));
    std::wstring sDevices;
    for (const auto& [link, NicInfo] : Listed())
    {
        SCOPED_TRACE(link.sName);
        ExpectRecord(link, NicInfo);
        bool bCanChange = false;
        EXPECT_TRUE(TOLVA::CanChangeAdapterOptions(NicInfo, bCanChange));
        sDevices += NicInfo.sNicPci.c_str() + std::wstring(bCanChange ? L" + " : L" - ");

        unsigned long ulIndex = 0;
        EXPECT_TRUE(TOLVA::GetAdapterIndex(NicInfo, ulIndex));
        EXPECT_EQ(link.ulIndex, ulIndex);
        TOLVA::TOLVA_OPER_STATUS enStatus = TOLVA::OPER_STATUS_UNKNOWN;
        EXPECT_TRUE(TOLVA::GetAdapterOperStatus(NicInfo, enStatus));
        EXPECT_EQ(link.bUp ? TOLVA::OPER_STATUS_UP : TOLVA::OPER_STATUS_DOWN, enStatus);
        std::vector<velmor::ip_address> found;
        EXPECT_TRUE(TOLVA::GetDnsServerList(NicInfo, found));
        EXPECT_EQ(servers, found);
        velmor::ip_address DhcpServer;
        EXPECT_TRUE(TOLVA::GetDhcpServer(NicInfo, DhcpServer));
        EXPECT_EQ(velmor::ip_address(), DhcpServer) << "there is none";
    }
    EXPECT_EQ(L"PCI\\A + PCI\\B - PCI\\C + ", sDevices) << "one device has no interface";
}

/// Asks for the records of every link, the loopback's too, as lines "link: record" in their order.
template <class Record, class Line>
std::vector<std::string> Lines(bool (*pAsk)(const TOLVA::NIC_INFO&, std::vector<Record>&), Line line)
{
    std::vector<std::string> lines;
    for (const nlohmann::json& fact : Facts()["links"])
    {
        TOLVA::NIC_INFO NicInfo;
        NicInfo.sNicGuid = GuidOf(fact["ifindex"]);
        std::vector<Record> records;
        EXPECT_TRUE(pAsk(NicInfo, records));
        for (const Record& record : records)
        {
            EXPECT_EQ(fact["ifindex"].get<unsigned long>(), record.ulIndex);
            if (const std::string sLine = line(record); !sLine.empty())
                lines.push_back(fact["ifname"].get<std::string>() + ": " + sLine);
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string Written(const velmor::ip_address& address, unsigned char prefix)
{
    return std::string(velmor::string(address).narrow_c_str()) + '/' + std::to_string(prefix);
}

/// The next hop of a route without a gateway: before Vista an address of the link itself.
std::string OnLink(const std::string& sLink)
{
    for (const nlohmann::json& link : Facts()["links"])
        for (const nlohmann::json& fact : link["addr_info"])
            if (!Facts()["vista"] && link["ifname"] == sLink && fact["family"] == "inet")
                return fact["local"];
    return "0.0.0.0";
}

TEST(Tables, RoutesAreTheKernels)
{
    std::vector<std::string> expected;
    for (const nlohmann::json& fact : Facts()["routes"])
    {
        std::string sDestination = fact["dst"];
        if (sDestination == "default")
            sDestination = "0.0.0.0/0";
        if (sDestination.find('/') == std::string::npos)
            sDestination += "/32";
        const std::string sLink = fact["dev"];
        expected.push_back(sLink + ": " + sDestination + " via " + fact.value("gateway", OnLink(sLink)) + " metric " +
                           std::to_string(fact.value("metric", 0)));
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_LE(7U, expected.size());
    EXPECT_EQ(expected, Lines(&TOLVA::GetAdapterRoutes, [](const TOLVA::ROUTE_INFO& Route) -> std::string {
                  if (Route.Destination.is_ipv6())
                      return {}; // Wine has none of the kernel's
                  return Written(Route.Destination, Route.PrefixLength) + " via " +
                         velmor::string(Route.NextHop).narrow_c_str() + " metric " + std::to_string(Route.ulMetric);
              }));
}

TEST(Tables, AddressesAreTheKernels)
{
    const bool bVista = Facts()["vista"];
    std::vector<std::string> expected;
    for (const nlohmann::json& link : Facts()["links"])
        for (const nlohmann::json& fact : link["addr_info"])
            if (bVista || fact["family"] == "inet")
                expected.push_back(link["ifname"].get<std::string>() + ": " + fact["local"].get<std::string>() + '/' +
                                   std::to_string(fact["prefixlen"].get<int>()));
    std::sort(expected.begin(), expected.end());
    EXPECT_LE(5U, expected.size());
    EXPECT_EQ(expected, Lines(&TOLVA::GetAdaptersIpAddrs, [](const TOLVA::ASSOC_IP_ADDR& IpAddr) {
                  return Written(IpAddr.IpAddress, IpAddr.SubnetPrefix);
              }));
}

const struct
{
    const char* pszCase;
    std::vector<std::pair<const char*, unsigned char>> list;
    const char* pszRefused;
    bool bDone;
    std::string sAfterwards;
} CHANGES[] = {
    {"IPv4", {{"198.51.100.1", 25}}, "", true, "198.51.100.1/25 2001:db8::10/64 fe80::10/64 "},
    {"IPv6", {{"2001:db8::99", 64}}, "", true, "10.77.0.5/16 192.0.2.10/24 2001:db8::99/64 "},
    {"both, there already", {{"2001:db8::10", 64}, {"192.0.2.10", 24}}, "", true, "192.0.2.10/24 2001:db8::10/64 "},
    {"a removal refused", {{"192.0.2.99", 24}}, "delete 10.77.0.5", false, "10.77.0.5/16 2001:db8::10/64 fe80::10/64 "},
    {"an addition refused",
     {{"198.51.100.1", 25}, {"2001:db8::99", 64}},
     "set 198.51.100.1",
     false,
     "2001:db8::99/64 "},
};

/// The command is a stand-in that changes the kernel's addresses as the system's changes those of an adapter.
TEST(Changes, AddressesAreTheKernelsAfterwards)
{
    const Link link = Links().at(0);
    const Seeded seeded(link);
    // Wine takes no notice of a folder that ends where the one before it has a backslash, unless it ends in one itself.
    ::_wputenv((L"PATH=" + testing_support::BesideProgram(L"stand_ins").wstring() + L";C:\\windows\\system32\\;" +
                ::_wgetenv(L"PATH"))
                   .c_str());
    TOLVA::NIC_INFO NicInfo;
    NicInfo.sNicGuid = link.sGuid;
    for (const auto& row : CHANGES)
    {
        SCOPED_TRACE(row.pszCase);
        std::string sOutput;
        ASSERT_TRUE(
            RunUnix("ip addr flush dev lan0; for a in 192.0.2.10/24 10.77.0.5/16 2001:db8::10/64 fe80::10/64; do "
                    "ip addr add $a dev lan0 nodad || exit 1; done",
                    sOutput))
            << sOutput;
        std::vector<TOLVA::ASSOC_IP_ADDR> list;
        for (const auto& [pszAddress, prefix] : row.list)
        {
            list.emplace_back().IpAddress = velmor::ip_address(pszAddress);
            list.back().SubnetPrefix = prefix;
        }
        ::_putenv_s("ZELK_REFUSED", row.pszRefused);
        EXPECT_EQ(row.bDone, TOLVA::SetAdaptersIpAddrs(NicInfo, list));
        EXPECT_TRUE(RunUnix("ip -o addr show dev lan0 | awk '{print $4}' | sort | tr '\\n' ' '", sOutput));
        EXPECT_EQ(row.sAfterwards, sOutput);
    }
}

/// Windows reports the lack of adapters as a failure, Wine an empty table.
TEST(LoopbackOnly, IsNotListedButAnswersQuestions)
{
    ASSERT_EQ(1U, Facts()["links"].size());
    std::vector<TOLVA::NIC_INFO> list;
    TOLVA::GetAdapterList(list);
    EXPECT_TRUE(list.empty());

    TOLVA::NIC_INFO loopback;
    loopback.sNicGuid = L"{00000001-0000-0000-0000-4E6574446576}";
    unsigned long ulIndex = 0;
    EXPECT_TRUE(TOLVA::GetAdapterIndex(loopback, ulIndex));
    EXPECT_EQ(Facts()["links"][0]["ifindex"].get<unsigned long>(), ulIndex);
    const unsigned char bytes[] = {1, 2, 3, 4, 5, 6};
    TOLVA::HARDWARE_ADDRESS HwAddr(bytes, sizeof(bytes));
    EXPECT_TRUE(TOLVA::GetHardwareAddress(loopback, HwAddr));
    EXPECT_EQ(0U, HwAddr.size());
}

} // namespace
