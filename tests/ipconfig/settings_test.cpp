#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

const std::wstring DRIVER_KEY = std::wstring(CLASS_KEY) + L"\\0007";

class Settings : public IpconfigTest
{
protected:
    Settings() { TheTrace.SetTraceLevel(4); }
    /// The first change of the locale opens a handle that the run time keeps.
    static void SetUpTestSuite() { SetDecimalComma(); }

    /// A setting of the driver and what it shows for it.
    void SeedSetting(const std::wstring& sName, const std::wstring& sPlace, const std::wstring& sText)
    {
        Seed(DRIVER_KEY, sName, StringData(L"of " + sName));
        Seed(DRIVER_KEY + L"\\Ndi\\" + sPlace + L'\\' + sName + L"\\Enum", L"of " + sName, StringData(sText));
    }
    void TellSpeed(const std::string& sTitle)
    {
        velmor::string sSpeed = L"untouched";
        Tell(sTitle, [&] { return Show(TOLVA::GetAdapterSpeed(NicInfo, sSpeed), sSpeed); });
    }
};

TEST_F(Settings, TheFirstNameThatADriverHasDecides)
{
    TellSpeed("no name"); // tells all names, in their order
    // A driver that has them all: each decides once those before it are gone.
    std::vector<std::wstring> names;
    const std::string NAME = "sLinkSpeedName = \"";
    for (const std::string& sLine : trace.Lines())
        if (const std::size_t at = sLine.find(NAME); at != std::string::npos)
            names.emplace_back(sLine.begin() + static_cast<std::ptrdiff_t>(at + NAME.size()), sLine.end() - 1);
    for (const std::wstring& sName : names)
        SeedSetting(sName, sName.size() % 2 == 0 ? L"params" : L"savedParams", L"text of " + sName);
    TheTrace.SetTraceLevel(1);
    for (const std::wstring& sName : names)
    {
        TellSpeed(Show("up to", sName));
        Seed(DRIVER_KEY, sName, DwordData(1)); // of a type that is no text it counts as none
    }
}

TEST_F(Settings, TextsAreLookedUpInTwoPlaces)
{
    SeedSetting(L"*SpeedDuplex", L"savedParams", L"saved");
    SeedSetting(L"MediaType", L"params", L"later");
    TellSpeed("in the second place");
    SeedSetting(L"*SpeedDuplex", L"params", L"first");
    TellSpeed("in both places");
    Seed(DRIVER_KEY, L"*SpeedDuplex", StringData(L"of nothing"));
    TellSpeed("in none: the other names are not tried");
}

TEST_F(Settings, MeasuredSpeed)
{
    SetDecimalComma();
    double speed = -1;
    const auto LinkSpeed = [&] { return Show(TOLVA::GetAdapterLinkSpeed(NicInfo, speed), speed); };
    for (const DWORD dwBits : {0UL, 5490000UL, 0xFFFFFFFFUL})
    {
        dwSpeed = dwBits;
        TellSpeed(Show("measured", dwBits));
        Tell(Show("measured", dwBits), LinkSpeed);
    }
    for (const char* pszFunction : {"GetIfEntry", "GetAdapterIndex"})
    {
        codes = {{pszFunction, {50, 50}}};
        TellSpeed(Show("failing:", pszFunction));
        Tell(Show("failing:", pszFunction), LinkSpeed);
    }
}

TEST_F(Settings, NetbiosAndAutomaticAddresses)
{
    const RegistryData NO_NUMBER = StringData(L"2");
    const RegistryData DATA[] = {MISSING, NO_NUMBER, DwordData(0), DwordData(1), DwordData(2)};
    const std::wstring sKey =
        L"SYSTEM\\CurrentControlSet\\services\\NetBT\\Parameters\\Interfaces\\Tcpip_" + std::wstring(GUID_A);
    bool bOn = false;
    for (const RegistryData& own : DATA)
        for (const RegistryData& dhcp : DATA)
        {
            Seed(sKey, L"NetbiosOptions", own);
            Seed(sKey, L"DHCPNetbiosOptions", dhcp);
            const auto ask = [&] { return Show(TOLVA::GetNetBIOSOverTcpipStatus(NicInfo, bOn), bOn); };
            Tell(Show("NetBIOS", own, "DHCP", dhcp), ask);
        }
    for (const RegistryData& data : DATA)
    {
        Store(false, L"IPAutoconfigurationEnabled", data);
        Tell(Show("automatic addresses", data), [&] { return Show(TOLVA::GetAutoconfigStatus(NicInfo, bOn), bOn); });
    }
    for (const RegistryData& data : {StringData(L"lan.example"), MISSING, StringData(L"list", REG_MULTI_SZ)})
    {
        Store(false, L"Domain", data);
        velmor::string sDomain = L"old";
        Tell(Show("domain", data), [&] { return Show(TOLVA::GetAdapterDomain(NicInfo, sDomain), sDomain); });
    }
}

} // namespace
