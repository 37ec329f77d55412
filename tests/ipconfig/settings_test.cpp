#include <regex>

#include <support/decimal_comma.h>

#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

const std::wstring DRIVER_KEY = std::wstring(CLASS_KEY) + L"\\0007";

class Settings : public IpconfigTest
{
protected:
    /// The first change of the locale opens a handle that the run time keeps.
    static void SetUpTestSuite() { const DecimalComma first; }

    /// A setting of the driver and what it shows for it.
    void SeedSetting(const std::wstring& sName, const std::wstring& sPlace, const std::wstring& sText)
    {
        Seed(DRIVER_KEY, sName, StringData(L"of " + sName));
        Seed(DRIVER_KEY + L"\\Ndi\\" + sPlace + L'\\' + sName + L"\\Enum", L"of " + sName, StringData(sText));
    }
    std::wstring Speed()
    {
        velmor::string sSpeed = L"untouched";
        trace.Empty();
        const bool bRc = TOLVA::GetAdapterSpeed(NicInfo, sSpeed);
        return (bRc ? L"" : L"failed: ") + Text(sSpeed);
    }
    /// What was measured: bits a second, or a failure.
    DWORD dwMeasured = 100000000;
    DWORD dwIfEntryRc = NO_ERROR;
    const ImportPatch<decltype(&::GetIfEntry)> ifEntry{"GetIfEntry", [this](MIB_IFROW* pRow) -> DWORD {
                                                           EXPECT_EQ(11U, pRow->dwIndex);
                                                           pRow->dwSpeed = dwMeasured;
                                                           return dwIfEntryRc;
                                                       }};
};

TEST_F(Settings, TheFirstNameThatADriverHasDecides)
{
    const auto names = Words("ConnectionType SpeedDuplex *SpeedDuplex MediaType DuplexMode LinkSelection LineSpeed "
                             "RequestedMediaType DataRate media Rate RingSpeed SpeedAndDuplex AutoNegotiation_A "
                             "ConnectionType_A ConnType EXTPHY ForceSpeedDpx LineConfig LinkSpeed Media_type "
                             "NetworkMedia SupportedRates transceiver XCVR_SELECT FullDuplex LineMode "
                             "FullDuplexEnable DuplexCapabilities_A");
    const auto Wide = [](const std::string& sName) { return std::wstring(sName.begin(), sName.end()); };
    for (const std::string& sName : names)
        SeedSetting(Wide(sName), sName.size() % 2 == 0 ? L"params" : L"savedParams", L"text of " + Wide(sName));
    TheTrace.SetTraceLevel(1);
    std::string sAsked, sExpected;
    for (const std::string& sName : names)
    {
        if (sName == "SupportedRates") // one name is asked for twice
            sExpected += "sLinkSpeedName = \"RequestedMediaType\"\n";
        sExpected += "sLinkSpeedName = \"" + sName + "\"\n";
        EXPECT_EQ(L"text of " + Wide(sName), Speed());
        Seed(DRIVER_KEY, Wide(sName), DwordData(1)); // of a type that is no text it counts as none
    }
    TheTrace.SetTraceLevel(4);
    EXPECT_EQ(L"100.0 Mbps", Speed());
    for (const std::string& sLine : trace.LinesOf("TOLVA::GetAdapterSpeed"))
        if (const std::size_t at = sLine.find("sLinkSpeedName"); at != std::string::npos)
            sAsked += sLine.substr(at) + '\n';
    EXPECT_EQ(sExpected, sAsked);
    EXPECT_EQ("[W] ... ending( No enum match found )", Said("TOLVA::GetAdapterSpeed"));
}

TEST_F(Settings, TextsAreLookedUpInTwoPlaces)
{
    SeedSetting(L"*SpeedDuplex", L"savedParams", L"saved");
    SeedSetting(L"MediaType", L"params", L"later");
    const auto Lines = [](const std::string& sSecond, const std::string& sSpeed) {
        const std::string KEY =
            R"( : sSpeedKey = "CurrentControlSet\Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\0007\Ndi\)";
        const std::string ENUM = "*SpeedDuplex\\Enum\"\n";
        const std::string sLines = R"([V] @ : starting ...
[V] @ : NicInfo.sNicGuid = "<guid>"
[V] @ : sSubKey = "CurrentControlSet\Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\0007"
[V] @ : sLinkSpeedName = "ConnectionType"
[V] @ : sLinkSpeedName = "SpeedDuplex"
[V] @ : sLinkSpeedName = "*SpeedDuplex"
[V] @ : Matched : LinkSpeedNames[i] = "*SpeedDuplex"
[V] @ : sCurrentSetting = "of *SpeedDuplex"
[V] @ : 1st attempt)" + KEY + "params\\" +
                                   ENUM + (sSecond.empty() ? "" : sSecond + KEY + "savedParams\\" + ENUM) +
                                   "[I] @ : sAdapterSpeed = \"" + sSpeed + "\"\n[V] @ : ... ending\n";
        return Transcript(std::regex_replace(sLines, std::regex("@"), "TOLVA::GetAdapterSpeed"));
    };
    EXPECT_EQ(L"saved", Speed());
    trace.ExpectLines(Lines("[V] @ : 2nd attempt", "saved"));
    SeedSetting(L"*SpeedDuplex", L"params", L"first");
    EXPECT_EQ(L"first", Speed());
    trace.ExpectLines(Lines("", "first"));
    Seed(DRIVER_KEY, L"*SpeedDuplex", StringData(L"of nothing"));
    EXPECT_EQ(L"failed: untouched", Speed()) << "the other names are not tried";
    EXPECT_EQ("[E] ... ending( Get adapter speed failed )", Said("TOLVA::GetAdapterSpeed"));
}

TEST_F(Settings, MeasuredSpeed)
{
    const DecimalComma comma;
    const std::tuple<DWORD, std::wstring, double> rows[] = {
        {0, L"0.0 Mbps", 0}, {5490000, L"5.5 Mbps", 5.49}, {0xFFFFFFFF, L"4295.0 Mbps", 4294.967295}};
    double speed = -1;
    for (const auto& [dwBits, sShown, megabits] : rows)
    {
        dwMeasured = dwBits;
        EXPECT_EQ(sShown, Speed());
        EXPECT_TRUE(TOLVA::GetAdapterLinkSpeed(NicInfo, speed));
        EXPECT_DOUBLE_EQ(megabits, speed);
    }
    const std::string NAME = "TOLVA::GetAdapterLinkSpeed";
    dwIfEntryRc = ERROR_NOT_SUPPORTED;
    EXPECT_EQ(L"Unknown", Speed());
    EXPECT_EQ("[E] ... ending( GetIfEntry failed ) : dwRc = 50", Said(NAME));
    indexNames.clear();
    indexCodes = {5};
    EXPECT_EQ(L"Unknown", Speed());
    EXPECT_EQ("[E] ... ending( TOLVA::GetAdapterIndex failed )", Said(NAME));
    EXPECT_FALSE(TOLVA::GetAdapterLinkSpeed(Adapter(L""), speed = -1));
    EXPECT_EQ(-1, speed);
    NicInfo.sNicEnum = L"";
    EXPECT_EQ(L"failed: untouched", Speed());
    EXPECT_EQ("[E] ... ending( Bad NIC Enum )", Said("TOLVA::GetAdapterSpeed"));
}

TEST_F(Settings, NetbiosAndAutomaticAddresses)
{
    const RegistryData NO_NUMBER = StringData(L"2");
    const std::tuple<RegistryData, RegistryData, std::string> rows[] = {
        {DwordData(1), DwordData(2), "1"}, {DwordData(2), DwordData(1), "2"}, {DwordData(3), MISSING, "3"},
        {DwordData(0), DwordData(1), "1"}, {DwordData(0), DwordData(2), "2"}, {DwordData(0), DwordData(0), "0"},
        {DwordData(0), MISSING, "1"},      {MISSING, DwordData(2), "2"},      {MISSING, DwordData(0), "0"},
        {MISSING, MISSING, "1"},           {NO_NUMBER, DwordData(5), "5"},    {NO_NUMBER, NO_NUMBER, "1"}};
    for (const auto& [own, dhcp, sEffective] : rows)
    {
        SCOPED_TRACE(testing::PrintToString(own.bytes) + testing::PrintToString(dhcp.bytes));
        const RegistryKeyScope key(L"SYSTEM\\CurrentControlSet\\services\\NetBT\\Parameters\\Interfaces\\Tcpip_" +
                                   std::wstring(GUID_A));
        if (own != MISSING)
            key.Set(L"", L"NetbiosOptions", own);
        if (dhcp != MISSING)
            key.Set(L"", L"DHCPNetbiosOptions", dhcp);
        trace.Empty();
        const bool bExpected = sEffective == "1";
        bool bUse = !bExpected;
        EXPECT_TRUE(TOLVA::GetNetBIOSOverTcpipStatus(NicInfo, bUse));
        EXPECT_EQ(bExpected, bUse);
        const std::string sLines = R"([V] @ : starting ...
[V] @ : sNetBtKey = "CurrentControlSet\services\NetBT\Parameters\Interfaces\Tcpip_<guid>"
[V] @ : dwNetbiosOptions = )" + sEffective +
                                   "\n[I] @ : bUseNetBIOSOverTcpip = " + (bExpected ? "true" : "false") +
                                   "\n[V] @ : ... ending\n";
        trace.ExpectLines(Transcript(std::regex_replace(sLines, std::regex("@"), "TOLVA::GetNetBIOSOverTcpipStatus")));
    }
    const std::pair<RegistryData, bool> automatic[] = {
        {MISSING, true}, {DwordData(0), false}, {DwordData(1), true}, {DwordData(2), false}, {NO_NUMBER, true}};
    for (const auto& [data, bExpected] : automatic)
    {
        Store(false, L"IPAutoconfigurationEnabled", data);
        trace.Empty();
        bool bEnabled = !bExpected;
        EXPECT_TRUE(TOLVA::GetAutoconfigStatus(NicInfo, bEnabled));
        EXPECT_EQ(bExpected, bEnabled) << testing::PrintToString(data.bytes);
        EXPECT_EQ(std::string("[I] bIsAutoConfig = ") + (bExpected ? "true" : "false") + "; [V] ... ending",
                  Said("TOLVA::GetAutoconfigStatus"));
        EXPECT_EQ(data.dwType == REG_DWORD, trace.Lines().size() == 5) << "the number, when there is one";
    }
}

TEST_F(Settings, Domain)
{
    const std::string NAME = "TOLVA::GetAdapterDomain";
    const std::pair<RegistryData, std::string> domains[] = {
        {StringData(L"lan.example"), "lan.example"}, {MISSING, ""}, {StringData(L"list", REG_MULTI_SZ), ""}};
    for (const auto& [data, sExpected] : domains)
    {
        Store(false, L"Domain", data);
        trace.Empty();
        velmor::string sDomain = L"old";
        EXPECT_TRUE(TOLVA::GetAdapterDomain(NicInfo, sDomain));
        EXPECT_EQ(sExpected, sDomain.narrow_c_str());
        EXPECT_EQ(sExpected.empty() ? "[V] ... ending" : "[I] sDomain = \"lan.example\"; [V] ... ending", Said(NAME));
    }
}

} // namespace
