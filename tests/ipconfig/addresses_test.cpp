#include "ipconfig_test.h"

#include <functional>

using namespace testing_support;

namespace
{

using Addresses = IpconfigTest;

std::vector<TOLVA::ASSOC_IP_ADDR> List(std::initializer_list<const char*> addresses)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> list;
    for (const char* pszAddress : addresses)
    {
        list.emplace_back().IpAddress = Ip(pszAddress);
        list.back().SubnetPrefix = 20;
    }
    return list;
}

TEST_F(Addresses, AreReplaced)
{
    const std::string NONE = "[E] ... ending( No IPv4 or IPv6 addresses in the supplied list )";
    const std::string KEPT = "[V] ... ending(One or more current IP addresses could not be removed)";
    const std::string DELETE4 = "ipv4 delete 10.0.0.1; ipv4 delete 10.0.0.2";
    const std::string DELETE6 = "ipv6 delete fe80::1; ipv6 delete fe80::2";
    const std::string ALL = "ipv4 delete 10.0.0.1; ipv6 delete fe80::1; ipv4 delete 10.0.0.2; ipv6 delete fe80::2";
    const std::string GONE6 = "[I] Removed@fe80::1; [I] Removed@fe80::2; ";
    const std::string SET4 = "; ipv4 set 10.1.0.1 255.255.240.0";
    const std::string DONE4 = "[I] Added@10.1.0.1; [V] ... ending";
    const std::string NO_STATE = "[W] TOLVA::IsDhcpEnabled failed; ";
    const struct
    {
        std::initializer_list<const char*> list;
        bool bEnabled4, bEnabled6; ///< else the state is not known
        std::function<void()> prepare;
        std::string sAsked, sSaid;
    } rows[] = {
        {{}, true, true, [] {}, "", NONE},
        {{"none", ""}, true, true, [] {}, "", NONE},
        {{"10.1.0.1"}, true, true, [] {}, "/release; " + DELETE4 + SET4, DONE4},
        {{"fe80::3"},
         true,
         true,
         [] {},
         "/release6; " + DELETE6 + "; ipv6 set fe80::3",
         GONE6 + "[I] Added@fe80::3; [V] ... ending"},
        {{"fe80::2", "10.1.0.1"},
         true,
         true,
         [] {},
         "/release; /release6; " + ALL + "; ipv6 set fe80::2" + SET4,
         GONE6 + "[I] Added@fe80::2; " + DONE4}, // one that is there already
        {{"10.1.0.1"},
         true,
         false,
         [&] { refused = {"release"}; },
         "/release; " + DELETE4 + SET4,
         "[W] TOLVA::ReleaseDhcp failed; " + DONE4},
        {{"fe80::3", "10.1.0.1"},
         true,
         false,
         [&] {
             refused = {"10.0.0.1", "fe80::2"};
         },
         ALL,
         NO_STATE + "[E] DeleteIpAddr failed@10.0.0.1; [I] Removed@fe80::1; [E] DeleteIpAddr failed@fe80::2; " + KEPT},
        {{"10.1.0.9", "none", "10.1.0.1"},
         false,
         true,
         [&] { refused = {"10.1.0.9"}; },
         DELETE4 + "; ipv4 set 10.1.0.9 255.255.240.0" + SET4,
         NO_STATE + "[E] AddIpAddr failed@10.1.0.9; [E] AddIpAddr failed@<invalid>; [I] Added@10.1.0.1; "
                    "[E] ... ending( Failed )"},
        {{"10.1.0.1"},
         true,
         true,
         [&] { dwTableRc = 5; },
         "/release",
         "[E] ... ending( TOLVA::GetAdaptersIpAddrs failed )"},
    };
    for (const char* pszAddress : {"10.0.0.1", "fe80::1", "10.0.0.2", "fe80::2"})
        AddAddress(pszAddress, 16);
    AddAddress("10.0.0.7", 8, 12); // another adapter's
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.sAsked + " -> " + row.sSaid);
        refused = {};
        dwTableRc = 0;
        Store(false, L"EnableDHCP", row.bEnabled4 ? DwordData(1) : MISSING);
        Store(true, L"Dhcpv6State", row.bEnabled6 ? DwordData(1) : MISSING);
        row.prepare();
        Asked();
        EXPECT_EQ(row.sSaid.ends_with("[V] ... ending"), TOLVA::SetAdaptersIpAddrs(NicInfo, List(row.list)));
        EXPECT_EQ(row.sSaid, Said("TOLVA::SetAdaptersIpAddrs"));
        EXPECT_EQ(row.sAsked, Asked());
        EXPECT_EQ(row.bEnabled4 ? DwordData(1) : MISSING, Stored(false, L"EnableDHCP"));
    }
    NicInfo.sNicGuid = L"";
    EXPECT_FALSE(TOLVA::SetAdaptersIpAddrs(NicInfo, List({"10.1.0.1"})));
    EXPECT_EQ("[E] ... ending( Bad NIC GUID )", Said("TOLVA::SetAdaptersIpAddrs"));
    EXPECT_EQ("", Asked());
}

TEST_F(Addresses, TheListIsReadAloud)
{
    dwTableRc = 5;
    EXPECT_FALSE(TOLVA::SetAdaptersIpAddrs(NicInfo, List({"fe80::1", "none", "10.0.0.1"})));
    std::vector<std::string> lines = trace.Lines();
    lines.resize(5);
    EXPECT_EQ(Transcript(R"([V] TOLVA::SetAdaptersIpAddrs : starting ...
[V] TOLVA::SetAdaptersIpAddrs : Found IPv6 address : sCurrentIpAddress = "fe80::1"
[V] TOLVA::SetAdaptersIpAddrs : Found IPv4 address : sCurrentIpAddress = "10.0.0.1"
[V] TOLVA::IsDhcpEnabled : starting ...
[V] TOLVA::IsDhcpEnabled : NicInfo.sNicGuid = "<guid>")"),
              lines);
}

} // namespace
