#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

using Addresses = IpconfigTest;

std::vector<TOLVA::ASSOC_IP_ADDR> List(const std::string& sAddresses)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> list;
    for (const std::string& sAddress : Words(sAddresses))
    {
        list.emplace_back().IpAddress = Ip(sAddress.c_str());
        list.back().SubnetPrefix = 20;
    }
    return list;
}

TEST_F(Addresses, AreReplaced)
{
    // IPv6 addresses are passed over on older systems, and there one that is none is left to the system to refuse.
    const std::string DELETE4 = "ipv4 delete 10.0.0.1; ipv4 delete 10.0.0.2";
    const std::string ALL = On("ipv6 delete fe80::1; ipv6 delete fe80::2; ", "") + DELETE4;
    const std::string ONLY6 = On("; ipv6 delete fe80::1; ipv6 delete fe80::2; ipv6 set fe80::3", "");
    const std::string SET6 = On("; ipv6 set fe80::2", "");
    const std::string SET_NONE = On("", "; ipv4 set 255.255.255.255 255.255.240.0");
    const std::string GONE6 = On("[I] Removed@fe80::1; [I] Removed@fe80::2; ", "");
    const std::string HALF6 = On("[I] Removed@fe80::1; [E] DeleteIpAddr failed@fe80::2; ", "");

    const std::string SET4 = "; ipv4 set 10.1.0.1 255.255.240.0";
    const std::string DONE4 = "[I] Added@10.1.0.1; [V] ... ending";
    const std::string NONE = "[E] ... ending( No IPv4 or IPv6 addresses in the supplied list )";
    const std::string KEPT = "[V] ... ending(One or more current IP addresses could not be removed)";
    const std::string NO_STATE = "[W] TOLVA::IsDhcpEnabled failed; ";
    const struct
    {
        std::string sList;
        bool bEnabled4, bEnabled6; ///< else the state is not known
        std::vector<std::string> refused;
        std::string sAsked, sSaid;
    } rows[] = {
        {"", true, true, {}, "", NONE},
        {"none", true, true, {}, "", NONE},
        {"10.1.0.1", true, true, {}, "/release; " + DELETE4 + SET4, DONE4},
        {"fe80::3", true, true, {}, "/release6" + ONLY6, GONE6 + "[I] Added@fe80::3; [V] ... ending"},
        {"10.1.0.1",
         true,
         false,
         {"release"},
         "/release; " + DELETE4 + SET4,
         "[W] TOLVA::ReleaseDhcp failed; " + DONE4},
        {"fe80::3 10.1.0.1",
         true,
         false,
         {"10.0.0.1", "fe80::2"},
         ALL,
         NO_STATE + HALF6 + "[E] DeleteIpAddr failed@10.0.0.1; " + KEPT},
        {"10.1.0.9 none 10.1.0.1",
         false,
         true,
         {"10.1.0.9", "255.255.255.255"},
         DELETE4 + "; ipv4 set 10.1.0.9 255.255.240.0" + SET_NONE + SET4,
         NO_STATE + "[E] AddIpAddr failed@10.1.0.9; [E] AddIpAddr failed@<invalid>; [I] Added@10.1.0.1; "
                    "[E] ... ending( Failed )"},
        // One that is there already is no exception.
        {"fe80::2 10.1.0.1",
         true,
         true,
         {},
         "/release; /release6; " + ALL + SET6 + SET4,
         GONE6 + "[I] Added@fe80::2; " + DONE4},
    };
    const std::string NAME = "TOLVA::SetAdaptersIpAddrs";
    std::vector<std::string> lines;
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.sAsked + " -> " + row.sSaid);
        refused = row.refused;
        Store(false, L"EnableDHCP", row.bEnabled4 ? DwordData(1) : MISSING);
        Store(true, L"Dhcpv6State", row.bEnabled6 ? DwordData(1) : MISSING);
        Asked();
        EXPECT_EQ(row.sSaid.ends_with("[V] ... ending"), TOLVA::SetAdaptersIpAddrs(NicInfo, List(row.sList)));
        EXPECT_EQ(row.sSaid, Said(NAME));
        lines = trace.Lines();
        EXPECT_EQ(row.sAsked, Asked());
        EXPECT_EQ(row.bEnabled4 ? DwordData(1) : MISSING, Stored(false, L"EnableDHCP"));
    }
    lines.resize(5);
    EXPECT_EQ(Transcript(R"([V] TOLVA::SetAdaptersIpAddrs : starting ...
[V] TOLVA::SetAdaptersIpAddrs : Found IPv6 address : sCurrentIpAddress = "fe80::2"
[V] TOLVA::SetAdaptersIpAddrs : Found IPv4 address : sCurrentIpAddress = "10.1.0.1"
[V] TOLVA::IsDhcpEnabled : starting ...
[V] TOLVA::IsDhcpEnabled : NicInfo.sNicGuid = "<guid>")"),
              lines);
    dwTableRc = 5;
    EXPECT_EQ(!VISTA, TOLVA::SetAdaptersIpAddrs(NicInfo, List("10.1.0.1"))) << "older systems have read them already";
    EXPECT_EQ(On("[E] ... ending( TOLVA::GetAdaptersIpAddrs failed )", DONE4), Said(NAME));
    EXPECT_EQ("/release" + On("", "; " + DELETE4 + SET4), Asked());
}

} // namespace
