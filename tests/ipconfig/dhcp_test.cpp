#include "ipconfig_test.h"

#include <functional>
#include <numeric>
#include <regex>

using namespace testing_support;

namespace
{

using Dhcp = IpconfigTest;

/// A state as it lies in the registry: -1 is a missing value, -2 one that is no number.
RegistryData Number(int iState)
{
    return iState == -1 ? MISSING : iState == -2 ? StringData(L"1") : DwordData(static_cast<DWORD>(iState));
}

/// The lines of a command that is run and succeeds. The place of its output differs from run to run.
std::string Command(const std::string& sOperation, const std::string& sAddress, const std::string& sCommand)
{
    const std::string sLines = R"([V] @ : starting ...
[V] TOLVA::GetAdapterIpconfigName : starting ...
[V] TOLVA::GetAdapterIpconfigName : sIpconfigName = "LAN 2"
[V] TOLVA::GetAdapterIpconfigName : ... ending
[V] @ : sIpconfigName = "LAN 2"
[V] TOLVA::GetTempFilename : starting ...
[V] TOLVA::GetTempFilename : wszTempPath = <file>
[V] TOLVA::GetTempFilename : wszTempFilename = <file>
[V] TOLVA::GetTempFilename : ... ending
[V] @ : sOut = <file>
)" + (sAddress.empty() ? "" : "[I] @ : sIpAddress = \"" + sAddress + "\"\n") +
                               "[V] @ : " + sCommand + " returned : iRc = 0\n[V] @ : ... ending\n";
    return std::regex_replace(sLines, std::regex("@"), sOperation);
}

/// The lines of the back end before Vista, which looks through the adapter's addresses until it has found the one.
std::string OlderRemoval(const std::string& sAddress)
{
    std::string sLines = "[V] @ : starting ...\n[V] @ : ulInterfaceIndex = 11\n";
    int iContext = 0;
    for (const std::string sListed : {"10.0.0.1", "10.0.0.2"})
    {
        sLines +=
            "[V] @ : pIpAddress->IpAddress.String = \"" + sListed + "\"\n[V] @ : sThisAddr = \"" + sListed + "\"\n";
        ++iContext;
        if (sListed == sAddress)
            break;
    }
    sLines += "[V] @ : Found matching IPv4 address : ulNteContext = " + std::to_string(iContext) +
              "\n[V] @ : Deleted\n[V] @ : ... ending\n";
    return std::regex_replace(sLines, std::regex("@"), "PreVistaAPI::DeleteIpAddr");
}

/// The lines of an address that is removed.
std::string Removed(const std::string& sAddress)
{
    const std::string sFamily = sAddress.find(':') == std::string::npos ? "ipv4" : "ipv6";
    const std::string sNewerRemoval =
        "[V] VistaAPI::DeleteIpAddr : starting ...\n" +
        Command("Wrap_netsh::RemoveIpAddr", sAddress, "netsh interface " + sFamily + " delete address") +
        "[V] VistaAPI::DeleteIpAddr : ... ending : bRc = true\n";
    return "[V] TOLVA::DeleteIpAddr : starting ...\n" + On(sNewerRemoval, OlderRemoval(sAddress)) +
           "[V] TOLVA::DeleteIpAddr : ... ending : bRc = true\n[I] TOLVA::ReturnToDhcp : Removed : "
           "sCurrentIpAddress = \"" +
           sAddress + "\"\n";
}

/// As one text, of which a failing comparison shows the differences.
std::string Joined(const std::vector<std::string>& lines)
{
    return std::accumulate(lines.begin(), lines.end(), std::string(),
                           [](const std::string& sAll, const std::string& sLine) { return sAll + sLine + '\n'; });
}

/// A request that came up every day: a static adapter becomes a DHCP client. The commands are stand-ins on the path.
TEST_F(Dhcp, AStaticAdapterReturns)
{
    const TempDirectory folder;
    WriteFileBytes(folder / L"exit", "0");
    sRecord = (folder / L"record").wstring();
    const std::wstring sPath = ::_wgetenv(L"PATH");
    // Wine looks at one byte too many for a folder without its last backslash.
    ::_wputenv((L"PATH=" + BesideProgram(L"..\\zelk_nm_tools_tests\\stand_ins").wstring() + L"\\;" +
                ::_wgetenv(L"SystemRoot") + L"\\system32\\")
                   .c_str());
    ::_wputenv((L"ZELK_STAND_IN=" + folder.Text()).c_str());
    Store(false, L"EnableDHCP", DwordData(0));
    Store(true, L"Dhcpv6State", DwordData(0));
    Store(false, L"NameServer", StringData(L"192.0.2.53"));
    Asked();

    EXPECT_TRUE(TOLVA::ReturnToDhcp(NicInfo, TOLVA::FAMILY_BOTH));
    ::_wputenv((L"PATH=" + sPath).c_str());
    std::vector<std::string> lines = trace.Lines();
    // How addresses are listed is told by the back ends' own tests.
    std::erase_if(lines, [](const std::string& sLine) {
        return std::regex_search(
            sLine, std::regex("VistaAPI::.*GetAdaptersIpAddrs|LoadTable|TOLVA::(GetAdapterIndex|Convert)"));
    });
    for (std::string& sLine : lines)
        sLine =
            std::regex_replace(sLine, std::regex("(wszTempPath|wszTempFilename|sOut) = \".:[^\"]+\""), "$1 = <file>");
    EXPECT_EQ(Joined(Transcript(R"(
[V] TOLVA::ReturnToDhcp : starting ...
[V] TOLVA::ReturnToDhcp : IPv4 and IPv6
[V] TOLVA::IsDhcpEnabled : starting ...
[V] TOLVA::IsDhcpEnabled : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::IsDhcpEnabled : IPv4 and IPv6
[V] TOLVA::IsDhcpEnabled : sTcpip4Key = "CurrentControlSet\services\Tcpip\Parameters\Interfaces\<guid>"
[V] TOLVA::IsDhcpEnabled : bDhcp4Enabled = false
[V] TOLVA::IsDhcpEnabled : sTcpip6Key = "CurrentControlSet\services\Tcpip6\Parameters\Interfaces\<guid>"
[V] TOLVA::IsDhcpEnabled : bDhcp6Enabled = false
[V] TOLVA::IsDhcpEnabled : ... ending : bDhcpEnabled = false
[V] TOLVA::GetAdaptersIpAddrs : starting ...
[V] TOLVA::GetAdaptersIpAddrs : ... ending : bRc = true
)" + On(Removed("fe80::1") + Removed("fe80::2"), "") +
                                Removed("10.0.0.1") + Removed("10.0.0.2") +
                                R"(
[V] TOLVA::ReturnToDhcp : sTcpip4Key = "CurrentControlSet\services\Tcpip\Parameters\Interfaces\<guid>"
[V] TOLVA::DisableAdapter : starting ...
[V] TOLVA::DisableAdapter : NicInfo.sNicPci = "PCI\A"
[V] TOLVA::AdapterStateChange : starting ...
[V] TOLVA::AdapterStateChange : ... ending
[V] TOLVA::DisableAdapter : ... ending
[V] TOLVA::EnableAdapter : starting ...
[V] TOLVA::EnableAdapter : NicInfo.sNicPci = "PCI\A"
[V] TOLVA::AdapterStateChange : starting ...
[V] TOLVA::AdapterStateChange : ... ending
[V] TOLVA::EnableAdapter : ... ending
[V] TOLVA::RenewDhcp : starting ...
[V] TOLVA::RenewDhcp : IPv4 and IPv6
)" + Command("Wrap_ipconfig::RenewDhcp4", "", "ipconfig /renew") +
                                Command("Wrap_ipconfig::RenewDhcp6", "", "ipconfig /renew6") +
                                "[V] TOLVA::RenewDhcp : ... ending\n[V] TOLVA::ReturnToDhcp : ... ending\n")),
              Joined(lines));
    EXPECT_EQ(On("netsh interface ipv6 delete address \"LAN 2\" fe80::1 persistent; "
                 "netsh interface ipv6 delete address \"LAN 2\" fe80::2 persistent; "
                 "netsh interface ipv4 delete address \"LAN 2\" 10.0.0.1; "
                 "netsh interface ipv4 delete address \"LAN 2\" 10.0.0.2; ",
                 "ipv4 delete 10.0.0.1; ipv4 delete 10.0.0.2; ") +
                  "disable; wait 500; enable; ipconfig /renew \"LAN 2\"; ipconfig /renew6 \"LAN 2\"",
              Asked());
    EXPECT_EQ(DwordData(1), Stored(false, L"EnableDHCP"));
    EXPECT_EQ(DwordData(0), Stored(true, L"Dhcpv6State"));
    EXPECT_EQ(StringData(L"192.0.2.53"), Stored(false, L"NameServer"));
    EXPECT_EQ(MISSING, Stored(true, L"EnableDHCP"));
}

TEST_F(Dhcp, WhetherItIsEnabled)
{
    const auto End = [](int iState, const std::string& sName, bool bOn) {
        return iState < 0 ? "[E] ... ending( Get '" + sName + "' failed )"
                          : std::string("[V] ... ending : bDhcpEnabled = ") + (bOn ? "true" : "false");
    };
    for (const int iState4 : {-2, -1, 0, 1, 2})
        for (const int iState6 : {-2, -1, 0, 1, 2})
        {
            Store(false, L"EnableDHCP", Number(iState4));
            Store(true, L"Dhcpv6State", Number(iState6));
            const std::string sEnd4 = End(iState4, "EnableDHCP", iState4 == 1);
            const std::string sEnd6 = End(iState6, "Dhcpv6State", iState6 > 0);
            // The first failure counts, and then what is off.
            const std::string sBoth = iState4 < 0 || (iState6 >= 0 && iState4 != 1) ? sEnd4 : sEnd6;
            for (const auto& [enFamily, sEnd] :
                 {std::pair(TOLVA::FAMILY_IPV4, sEnd4), {TOLVA::FAMILY_IPV6, sEnd6}, {TOLVA::FAMILY_BOTH, sBoth}})
                for (const bool bBefore : {false, true})
                {
                    Asked();
                    bool bEnabled = bBefore;
                    EXPECT_EQ(sEnd[1] == 'V', TOLVA::IsDhcpEnabled(NicInfo, enFamily, bEnabled));
                    EXPECT_EQ(sEnd, Said("TOLVA::IsDhcpEnabled")) << iState4 << ' ' << iState6 << ' ' << enFamily;
                    EXPECT_EQ(sEnd[1] == 'E' ? bBefore : sEnd.ends_with("true"), bEnabled);
                }
        }
}

TEST_F(Dhcp, WhatNoOperationAccepts)
{
    bool b = true;
    velmor::string sText = L"old";
    std::vector<velmor::ip_address> list;
    using Nic = const TOLVA::NIC_INFO&;
    using Family = TOLVA::FAMILY_TYPE;
    const std::string UNKNOWN = "[E] ... ending( Unknown address family ) : enFamilyType = 5";
    const std::string OTHER = "[E] ... ending( Unknown family type ) : enFamilyType = 5";
    const std::tuple<std::string, std::function<bool(Nic, Family)>, std::string> rows[] = {
        {"IsDhcpEnabled", [&](Nic nic, Family f) { return TOLVA::IsDhcpEnabled(nic, f, b); }, UNKNOWN},
        {"RenewDhcp", &TOLVA::RenewDhcp, UNKNOWN},
        {"ReleaseDhcp", &TOLVA::ReleaseDhcp, UNKNOWN},
        {"ReturnToDhcp", &TOLVA::ReturnToDhcp, UNKNOWN},
        {"GetDefaultGatewayList", [&](Nic nic, Family f) { return TOLVA::GetDefaultGatewayList(nic, f, list); },
         UNKNOWN},
        {"IsGatewayAutomatic", [&](Nic nic, Family f) { return TOLVA::IsGatewayAutomatic(nic, f, b); }, UNKNOWN},
        {"ReturnGatewayToDhcp", &TOLVA::ReturnGatewayToDhcp, UNKNOWN},
        {"ReturnDnsToDhcp", &TOLVA::ReturnDnsToDhcp, OTHER},
        {"IsDnsAutomatic", [&](Nic nic, Family f) { return TOLVA::IsDnsAutomatic(nic, f, b); }, ""},
        {"SetDnsServerList", [&](Nic nic, Family) { return TOLVA::SetDnsServerList(nic, list); }, ""},
        {"SetAdaptersIpAddrs", [&](Nic nic, Family) { return TOLVA::SetAdaptersIpAddrs(nic, {}); }, ""},
        {"GetAdapterSpeed", [&](Nic nic, Family) { return TOLVA::GetAdapterSpeed(nic, sText); }, ""},
        {"GetAdapterDomain", [&](Nic nic, Family) { return TOLVA::GetAdapterDomain(nic, sText); }, ""},
        {"GetAutoconfigStatus", [&](Nic nic, Family) { return TOLVA::GetAutoconfigStatus(nic, b); }, ""},
        {"GetNetBIOSOverTcpipStatus", [&](Nic nic, Family) { return TOLVA::GetNetBIOSOverTcpipStatus(nic, b); }, ""}};
    for (const auto& [sName, run, sUnknown] : rows)
    {
        TOLVA::NIC_INFO lacking = NicInfo;
        const bool bRelease = sName == "ReleaseDhcp"; // the only one that asks for the name
        (bRelease ? lacking.sNicName : lacking.sNicGuid) = L"";
        Asked();
        EXPECT_FALSE(run(lacking, TOLVA::FAMILY_BOTH));
        EXPECT_EQ(bRelease ? "[E] ... ending( Bad NIC name )" : "[E] ... ending( Bad NIC GUID )",
                  Said("TOLVA::" + sName));
        if (sUnknown.empty())
            continue;
        Asked();
        EXPECT_FALSE(run(NicInfo, UNKNOWN_FAMILY));
        EXPECT_EQ(sUnknown, Said("TOLVA::" + sName));
    }
    EXPECT_EQ("", Asked());
    EXPECT_TRUE(b && Text(sText) == L"old");
    for (const wchar_t* pszName : {L"DefaultGateway", L"NameServer", L"EnableDHCP"})
        EXPECT_TRUE(Stored(false, pszName) == MISSING && Stored(true, pszName) == MISSING);
}

TEST_F(Dhcp, LeasesOfBothFamiliesUntilOneIsRefused)
{
    const std::pair<std::string, bool (*)(const TOLVA::NIC_INFO&, TOLVA::FAMILY_TYPE)> operations[] = {
        {"Renew", &TOLVA::RenewDhcp}, {"Release", &TOLVA::ReleaseDhcp}};
    const std::tuple<TOLVA::FAMILY_TYPE, std::string, std::string, std::string> rows[] = {
        {TOLVA::FAMILY_IPV4, "", "@", ""},       {TOLVA::FAMILY_IPV6, "", "@6", ""},
        {TOLVA::FAMILY_BOTH, "", "@; @6", ""},   {TOLVA::FAMILY_BOTH, "/", "@", "4"},
        {TOLVA::FAMILY_BOTH, "6", "@; @6", "6"}, {TOLVA::FAMILY_IPV6, "/", "@6", "6"}};
    for (const auto& [sName, run] : operations)
        for (const auto& [enFamily, sRefused, sAsked, sFailed] : rows)
        {
            SCOPED_TRACE(sName + std::to_string(enFamily) + sRefused);
            refused.assign(sRefused.empty() ? 0 : 1, sRefused);
            EXPECT_EQ(sFailed.empty(), run(NicInfo, enFamily));
            EXPECT_EQ(sFailed.empty() ? "[V] ... ending"
                                      : "[E] ... ending( Wrap_ipconfig::" + sName + "Dhcp" + sFailed + " failed )",
                      Said("TOLVA::" + sName + "Dhcp"));
            EXPECT_EQ(std::regex_replace(sAsked, std::regex("@"), sName == "Renew" ? "/renew" : "/release"), Asked());
        }
}

TEST_F(Dhcp, ReturningStopsForFewThings)
{
    // On older systems the addresses are those of IPv4, and they have been read before they cannot be.
    const std::string DELETE4 = "ipv4 delete 10.0.0.1; ipv4 delete 10.0.0.2; ";
    const std::string DELETE6 = On("ipv6 delete fe80::1; ipv6 delete fe80::2; ", "");
    const std::string GONE4 = "[I] Removed@10.0.0.1; [I] Removed@10.0.0.2; ";
    const std::string GONE6 = On("[I] Removed@fe80::1; [I] Removed@fe80::2; ", "");
    const std::string RESTART = "disable; wait 500; enable; ";
    const std::string UNREAD = On("", DELETE4 + RESTART + "/renew");
    const std::string NOT_READ = On("[E] ... ending( TOLVA::GetAdaptersIpAddrs failed )", GONE4 + "[V] ... ending");

    const std::string KEPT = "[V] ... ending( One or more current IP addresses could not be removed ); ";
    const std::string FAIL4 = "[E] DeleteIpAddr failed@10.0.0.1; ";
    const std::string NO_DEVICE = "[E] TOLVA::DisableAdapter; [E] TOLVA::EnableAdapter; ";
    const auto BOTH = TOLVA::FAMILY_BOTH, IPV4 = TOLVA::FAMILY_IPV4, IPV6 = TOLVA::FAMILY_IPV6;
    const struct
    {
        TOLVA::FAMILY_TYPE enFamily;
        int iState4, iState6, iAfter4;
        DWORD dwTableRc;
        int iFailWrite;
        std::vector<std::string> refused;
        std::string sAsked, sSaid;
    } rows[] = {
        {IPV6, 0, 0, 0, 0, 0, {}, DELETE6 + RESTART + "/renew6", GONE6 + "[V] ... ending"},
        {BOTH, 1, 2, 1, 0, 0, {}, "", "[W] ... ending( Already using DHCP )"},
        {BOTH, 0, -1, 0, 0, 0, {}, "", "[E] ... ending( TOLVA::IsDhcpEnabled failed )"},
        {IPV4, 2, 0, VISTA ? 2 : 1, 5, 0, {}, UNREAD, NOT_READ},
        {IPV4,
         2,
         0,
         1,
         0,
         0,
         {"10.0.0.1", "able", "renew"},
         DELETE4 + RESTART + "/renew",
         FAIL4 + "[I] Removed@10.0.0.2; " + KEPT + NO_DEVICE + "[E] ... ending( TOLVA::RenewDhcp failed )"},
        {IPV4,
         2,
         0,
         2,
         0,
         1,
         {},
         DELETE4.substr(0, DELETE4.size() - 2),
         GONE4 + "[E] ... ending( Set 'EnableDHCP' failed )"},
        {BOTH, 1, 0, 1, 0, 0, {}, DELETE6 + DELETE4 + RESTART + "/renew; /renew6", GONE6 + GONE4 + "[V] ... ending"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.sSaid);
        dwTableRc = row.dwTableRc;
        refused = row.refused;
        Store(false, L"EnableDHCP", Number(row.iState4));
        Store(true, L"Dhcpv6State", Number(row.iState6));
        Asked();
        iFailWrite = row.iFailWrite;
        EXPECT_EQ(row.sSaid.rfind("[E] ...") == std::string::npos, TOLVA::ReturnToDhcp(NicInfo, row.enFamily));
        EXPECT_EQ(row.sSaid, Said("TOLVA::ReturnToDhcp"));
        EXPECT_EQ(row.sAsked, Asked());
        EXPECT_EQ(Number(row.iAfter4), Stored(false, L"EnableDHCP"));
        EXPECT_EQ(Number(row.iState6), Stored(true, L"Dhcpv6State"));
    }
}

} // namespace
