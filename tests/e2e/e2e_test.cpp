// The real DLL on a network made for the test: what it reports against what the kernel says.

#include <cstdlib>
#include <set>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <e2e/network.h>
#include <e2e/unix_command.h>
#include <support/golden.h>
#include <zelk_nm/tolva.h>

using testing_support::Show;

namespace
{

/// In the golden text: what the library's tables tell of every link, the loopback's too, as the script around the tests
/// has made it, without its number. Wine has none of the kernel's routes of IPv6, and before Vista no table has its
/// addresses.
TEST(Tables, AreTheKernels)
{
    testing_support::Golden golden;
    for (const nlohmann::json& fact : Facts()["links"])
    {
        TOLVA::NIC_INFO NicInfo;
        NicInfo.sNicGuid = GuidOf(fact["ifindex"]);
        std::vector<TOLVA::ASSOC_IP_ADDR> addresses;
        std::vector<TOLVA::ROUTE_INFO> routes;
        EXPECT_TRUE(TOLVA::GetAdaptersIpAddrs(NicInfo, addresses));
        EXPECT_TRUE(TOLVA::GetAdapterRoutes(NicInfo, routes));
        std::multiset<std::string> lines; // the order is the system's
        for (const TOLVA::ASSOC_IP_ADDR& address : addresses)
        {
            EXPECT_EQ(fact["ifindex"].get<unsigned long>(), address.ulIndex);
            lines.insert(Show("address", address.IpAddress, "prefix", address.SubnetPrefix));
        }
        for (TOLVA::ROUTE_INFO& route : routes)
        {
            EXPECT_EQ(fact["ifindex"].get<unsigned long>(), std::exchange(route.ulIndex, 0));
            if (!route.Destination.is_ipv6())
                lines.insert(Show("route", route));
        }
        for (const std::string& sLine : lines)
            golden.Line(fact["ifname"].get<std::string>(), sLine);
    }
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
