#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

const std::wstring DRIVER_KEY = std::wstring(CLASS_KEY) + L"\\0007";

class Settings : public IpconfigTest
{
protected:
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
    const wchar_t* const names[] = {L"ConnectionType",
                                    L"SpeedDuplex",
                                    L"*SpeedDuplex",
                                    L"MediaType",
                                    L"DuplexMode",
                                    L"LinkSelection",
                                    L"LineSpeed",
                                    L"RequestedMediaType",
                                    L"DataRate",
                                    L"media",
                                    L"Rate",
                                    L"RingSpeed",
                                    L"SpeedAndDuplex",
                                    L"AutoNegotiation_A",
                                    L"ConnectionType_A",
                                    L"ConnType",
                                    L"EXTPHY",
                                    L"ForceSpeedDpx",
                                    L"LineConfig",
                                    L"LinkSpeed",
                                    L"Media_type",
                                    L"NetworkMedia",
                                    L"SupportedRates",
                                    L"transceiver",
                                    L"XCVR_SELECT",
                                    L"FullDuplex",
                                    L"LineMode",
                                    L"FullDuplexEnable",
                                    L"DuplexCapabilities_A"};
    for (const std::wstring sName : names)
        SeedSetting(sName, sName.size() % 2 == 0 ? L"params" : L"savedParams", L"text of " + sName);
    TheTrace.SetTraceLevel(1);
    for (const std::wstring sName : names)
    {
        EXPECT_EQ(L"text of " + sName, Speed());
        // Of a type that is no text it counts as none.
        Seed(DRIVER_KEY, sName, DwordData(1));
    }
    EXPECT_EQ(L"100.0 Mbps", Speed());

    TheTrace.SetTraceLevel(4);
    EXPECT_EQ(L"100.0 Mbps", Speed());
    std::vector<std::string> lines = trace.Lines();
    lines.resize(35);
    lines.erase(lines.begin() + 3, lines.begin() + 25);
    lines.erase(lines.begin() + 5, lines.begin() + 9);
    EXPECT_EQ(Transcript(R"([V] TOLVA::GetAdapterSpeed : starting ...
[V] TOLVA::GetAdapterSpeed : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterSpeed : sSubKey = "CurrentControlSet\Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\0007"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "RequestedMediaType"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "SupportedRates"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "FullDuplexEnable"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "DuplexCapabilities_A"
[W] TOLVA::GetAdapterSpeed : ... ending( No enum match found )
[V] TOLVA::GetAdapterLinkSpeed : starting ...)"),
              lines)
        << "one name is asked for twice";
}

TEST_F(Settings, TextsAreLookedUpInTwoPlaces)
{
    SeedSetting(L"*SpeedDuplex", L"savedParams", L"saved");
    SeedSetting(L"MediaType", L"params", L"later");
    const std::string FIRST = R"(
[V] TOLVA::GetAdapterSpeed : starting ...
[V] TOLVA::GetAdapterSpeed : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterSpeed : sSubKey = "CurrentControlSet\Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\0007"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "ConnectionType"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "SpeedDuplex"
[V] TOLVA::GetAdapterSpeed : sLinkSpeedName = "*SpeedDuplex"
[V] TOLVA::GetAdapterSpeed : Matched : LinkSpeedNames[i] = "*SpeedDuplex"
[V] TOLVA::GetAdapterSpeed : sCurrentSetting = "of *SpeedDuplex"
[V] TOLVA::GetAdapterSpeed : 1st attempt : sSpeedKey = "CurrentControlSet\Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\0007\Ndi\params\*SpeedDuplex\Enum"
)";
    const std::string SECOND = R"([V] TOLVA::GetAdapterSpeed : 2nd attempt : sSpeedKey = )"
                               R"("CurrentControlSet\Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\0007\Ndi\)"
                               "savedParams\\*SpeedDuplex\\Enum\"\n";
    const std::string END = "[V] TOLVA::GetAdapterSpeed : ... ending\n";
    EXPECT_EQ(L"saved", Speed());
    trace.ExpectLines(Transcript(FIRST + SECOND + "[I] TOLVA::GetAdapterSpeed : sAdapterSpeed = \"saved\"\n" + END));
    SeedSetting(L"*SpeedDuplex", L"params", L"first");
    EXPECT_EQ(L"first", Speed());
    trace.ExpectLines(Transcript(FIRST + "[I] TOLVA::GetAdapterSpeed : sAdapterSpeed = \"first\"\n" + END));
    Seed(DRIVER_KEY, L"*SpeedDuplex", StringData(L"of nothing"));
    EXPECT_EQ(L"failed: untouched", Speed()) << "the other names are not tried";
    EXPECT_EQ("[E] ... ending( Get adapter speed failed )", Said("TOLVA::GetAdapterSpeed"));
}

TEST_F(Settings, MeasuredSpeed)
{
    const struct
    {
        DWORD dwMeasured;
        const wchar_t* pszSpeed;
        double speed;
    } rows[] = {{0, L"0.0 Mbps", 0},
                {5490000, L"5.5 Mbps", 5.49},
                {1000000000, L"1000.0 Mbps", 1000},
                {0xFFFFFFFF, L"4295.0 Mbps", 4294.967295}};
    double speed = -1;
    for (const auto& row : rows)
    {
        dwMeasured = row.dwMeasured;
        EXPECT_EQ(row.pszSpeed, Speed());
        EXPECT_TRUE(TOLVA::GetAdapterLinkSpeed(NicInfo, speed));
        EXPECT_DOUBLE_EQ(row.speed, speed);
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
    NicInfo.sNicGuid = L"";
    EXPECT_EQ(L"failed: untouched", Speed());
    EXPECT_EQ("[E] ... ending( Bad NIC GUID )", Said("TOLVA::GetAdapterSpeed"));
}

TEST_F(Settings, NetbiosAndAutomaticAddresses)
{
    const RegistryData NO_NUMBER = StringData(L"2");
    const struct
    {
        RegistryData own, dhcp;
        std::string sEffective;
    } rows[] = {{DwordData(1), DwordData(2), "1"}, {DwordData(2), DwordData(1), "2"}, {DwordData(3), MISSING, "3"},
                {DwordData(0), DwordData(1), "1"}, {DwordData(0), DwordData(2), "2"}, {DwordData(0), DwordData(0), "0"},
                {DwordData(0), MISSING, "1"},      {MISSING, DwordData(2), "2"},      {MISSING, DwordData(0), "0"},
                {MISSING, MISSING, "1"},           {NO_NUMBER, DwordData(5), "5"},    {NO_NUMBER, NO_NUMBER, "1"}};
    const std::wstring sParent = L"SYSTEM\\CurrentControlSet\\services\\NetBT\\Parameters\\Interfaces\\Tcpip_";
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.own.bytes) + testing::PrintToString(row.dhcp.bytes));
        const RegistryKeyScope key(sParent + GUID_A);
        for (const auto& [pszName, pData] :
             {std::pair(L"NetbiosOptions", &row.own), {L"DHCPNetbiosOptions", &row.dhcp}})
            if (*pData != MISSING)
                key.Set(L"", pszName, *pData);
        trace.Empty();
        const bool bExpected = row.sEffective == "1";
        bool bUse = !bExpected;
        EXPECT_TRUE(TOLVA::GetNetBIOSOverTcpipStatus(NicInfo, bUse));
        EXPECT_EQ(bExpected, bUse);
        trace.ExpectLines(
            Transcript(R"(
[V] TOLVA::GetNetBIOSOverTcpipStatus : starting ...
[V] TOLVA::GetNetBIOSOverTcpipStatus : sNetBtKey = "CurrentControlSet\services\NetBT\Parameters\Interfaces\Tcpip_<guid>"
[V] TOLVA::GetNetBIOSOverTcpipStatus : dwNetbiosOptions = )" +
                       row.sEffective + "\n[I] TOLVA::GetNetBIOSOverTcpipStatus : bUseNetBIOSOverTcpip = " +
                       (bExpected ? "true" : "false") + "\n[V] TOLVA::GetNetBIOSOverTcpipStatus : ... ending\n"));
    }
    for (const auto& [data, bExpected] : {std::pair(MISSING, true),
                                          {DwordData(0), false},
                                          {DwordData(1), true},
                                          {DwordData(2), false},
                                          {NO_NUMBER, true}})
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
    for (const auto& [data, sExpected] : {std::pair(StringData(L"lan.example"), std::string("lan.example")),
                                          {MISSING, ""},
                                          {StringData(L"list", REG_MULTI_SZ), ""}})
    {
        Store(false, L"Domain", data);
        trace.Empty();
        velmor::string sDomain = L"old";
        EXPECT_TRUE(TOLVA::GetAdapterDomain(NicInfo, sDomain));
        EXPECT_EQ(sExpected, sDomain.narrow_c_str());
        EXPECT_EQ(sExpected.empty() ? "[V] ... ending" : "[I] sDomain = \"lan.example\"; [V] ... ending", Said(NAME));
    }
    velmor::string sDomain = L"old";
    bool bAnswer = true;
    NicInfo.sNicGuid = L"";
    EXPECT_FALSE(TOLVA::GetAdapterDomain(NicInfo, sDomain));
    EXPECT_FALSE(TOLVA::GetAutoconfigStatus(NicInfo, bAnswer));
    EXPECT_FALSE(TOLVA::GetNetBIOSOverTcpipStatus(NicInfo, bAnswer));
    EXPECT_EQ(L"old", Text(sDomain));
    EXPECT_TRUE(bAnswer);
}

} // namespace
