#include "discovery_test.h"

using testing_support::DwordData;
using testing_support::RegistryData;
using testing_support::StringData;

namespace
{

/// Text data without a terminator, with as many stray bytes at its end.
RegistryData Unterminated(std::wstring_view sText, std::size_t strays = 0)
{
    RegistryData data = StringData(sText);
    data.bytes.resize(sText.size() * sizeof(wchar_t));
    data.bytes.resize(data.bytes.size() + strays, 'Z');
    return data;
}

class AdapterIdentity : public DiscoveryTest
{
protected:
    /// Completes one record; the platform lists no adapter of its own.
    TOLVA::NIC_INFO Completed(TOLVA::NIC_INFO NicInfo)
    {
        interfaces = {};
        interfaces.claimed = 0;
        trace.Empty();
        std::vector<TOLVA::NIC_INFO> list = {NicInfo};
        EXPECT_TRUE(TOLVA::GetAdapterList(list));
        return list.at(0);
    }
};

TEST_F(AdapterIdentity, WhichSubkeyIsTheAdapters)
{
    const std::wstring sLower = L"{0a1b2c3d-5e6f-4711-8123-9d0e1f2a3b4c}";
    const struct
    {
        const char* pszCase;
        std::vector<std::pair<const wchar_t*, RegistryData>> instances; ///< subkey and its NetCfgInstanceId
        const wchar_t* pszEnum;
    } rows[] = {
        {"letter case does not count", {{L"0001", StringData(sLower)}}, L"0001"},
        {"the first of two", {{L"0004", StringData(GUID_A)}, {L"0002", StringData(GUID_A)}}, L"0002"},
        {"after strangers", {{L"0001", StringData(L"{1}")}, {L"0002", StringData(GUID_A)}}, L"0002"},
        {"another type", {{L"0001", StringData(GUID_A, REG_EXPAND_SZ)}, {L"0002", StringData(GUID_A)}}, L"0002"},
        {"no terminator", {{L"0001", Unterminated(GUID_A)}}, L"0001"},
        {"an odd byte", {{L"0001", Unterminated(GUID_A, 1)}}, L"0001"},
        {"text after the terminator", {{L"0001", StringData(std::wstring(GUID_A) + L'\0' + L"x")}}, L"0001"},
        {"text after the GUID", {{L"0001", StringData(std::wstring(GUID_A) + L"x")}}, L""},
        {"the start of the GUID", {{L"0001", StringData(std::wstring(GUID_A, 20))}}, L""},
        {"no bytes", {{L"0001", RegistryData{REG_SZ, {}}}}, L""},
        {"a number", {{L"0001", DwordData(7)}}, L""},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.pszCase);
        const testing_support::RegistryKeyScope key(CLASS_KEY);
        for (const auto& [pszSubKey, data] : row.instances)
            key.Set(pszSubKey, L"NetCfgInstanceId", data);
        EXPECT_EQ(row.pszEnum, Text(Completed(Adapter()).sNicEnum));
        for (const auto& [pszSubKey, data] : row.instances)
            ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, (std::wstring(CLASS_KEY) + L"\\" + pszSubKey).c_str());
    }
}

TEST_F(AdapterIdentity, TheSearchSpeaksOfEverySubkeyWithAnInstance)
{
    const testing_support::RegistryKeyScope key(CLASS_KEY);
    key.Set(L"0001", L"NetCfgInstanceId", StringData(L"{OTHER}"));
    key.Set(L"0002", L"DriverDesc", StringData(L"has no instance"));
    key.Set(L"0003", L"NetCfgInstanceId", StringData(GUID_A));
    key.Set(L"0003", L"DriverDesc", DwordData(1));
    key.Set(L"0004", L"NetCfgInstanceId", StringData(L"{NEVER SEEN}"));
    TOLVA::NIC_INFO NicInfo = Adapter();
    NicInfo.sNicDesc = L"kept";
    EXPECT_EQ(L"kept", Text(Completed(NicInfo).sNicDesc)) << "no readable description, but found";
    EXPECT_EQ(Transcript(R"(
[V] TOLVA::GetAdapterEnumAndDesc : starting ...
[V] TOLVA::GetAdapterEnumAndDesc : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterEnumAndDesc : Found NetCfgInstanceId : sNetCfgInstanceId = "{OTHER}"
[V] TOLVA::GetAdapterEnumAndDesc : Found NetCfgInstanceId : sNetCfgInstanceId = "<guid>"
[V] TOLVA::GetAdapterEnumAndDesc : Found correct enum : NicInfo.sNicEnum = "0003"
[V] TOLVA::GetAdapterEnumAndDesc : bFoundEnum = true
)"),
              trace.LinesOf("TOLVA::GetAdapterEnumAndDesc"));

    const std::string NAME = "] TOLVA::GetAdapterEnumAndDesc : ";
    const auto End = [&](const wchar_t* pszGuid) {
        Completed(Adapter(pszGuid));
        return trace.LinesOf("TOLVA::GetAdapterEnumAndDesc").back();
    };
    EXPECT_EQ("[V" + NAME + "bFoundEnum = false", End(L"{NOBODY}"));
    EXPECT_EQ("[E" + NAME + "... ending( Bad NIXC GUID )", End(L""));
    const auto patch = PATCH_IMPORT(RegOpenKeyExW, [](auto...) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ("[E" + NAME + "... ending( velmor::Registry_System::EnumerateKeys failed) ", End(GUID_A));
}

TEST_F(AdapterIdentity, DeviceInstanceAndItsFallback)
{
    const struct
    {
        RegistryData device, connection;
        const wchar_t* pszPci; ///< "kept" for a failure
        bool bFallback;
    } rows[] = {{StringData(L"PCI\\D"), StringData(L"PCI\\C"), L"PCI\\D", false},
                {{}, StringData(L"PCI\\C"), L"PCI\\C", true},
                {StringData(L"PCI\\D", REG_MULTI_SZ), StringData(L"PCI\\C"), L"PCI\\C", true},
                {{}, {}, L"kept", true},
                {{}, DwordData(1), L"kept", true}};
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope key(std::wstring(CLASS_KEY) + L"\\0001");
        const testing_support::RegistryKeyScope connection(CONNECTION_KEY);
        key.Set(L"", L"NetCfgInstanceId", StringData(GUID_A));
        key.Set(L"", L"DeviceInstanceID", row.device);
        connection.Set(L"", L"PnpInstanceID", row.connection);
        TOLVA::NIC_INFO NicInfo = Adapter();
        NicInfo.sNicPci = L"kept";
        EXPECT_EQ(row.pszPci, Text(Completed(NicInfo).sNicPci));
        EXPECT_EQ(row.bFallback, trace.Has("[I] TOLVA::GetAdapterPCI : 'DeviceInstanceID' not found"));
        EXPECT_EQ(row.pszPci == std::wstring(L"kept")
                      ? "[E] TOLVA::GetAdapterPCI : ... ending( Get 'PnpInstanceID' failed)"
                      : "[V] TOLVA::GetAdapterPCI : ... ending",
                  trace.LinesOf("TOLVA::GetAdapterPCI").back());
    }
}

TEST_F(AdapterIdentity, ConnectionName)
{
    const struct
    {
        const wchar_t* pszGuid;
        RegistryData name;
        const wchar_t* pszName; ///< "unset" for a failure
        std::string sEnd;
    } rows[] = {{GUID_A, StringData(L"B\u00FCro \u6771 2"), L"B\u00FCro \u6771 2", "[V] @ : ... ending"},
                {GUID_A, {}, L"unset", "[E] @ : ... ending( Get 'Name' failed )"},
                {GUID_A, StringData(L"LAN", REG_EXPAND_SZ), L"unset", "[E] @ : ... ending( Get 'Name' failed )"},
                {L"", StringData(L"LAN"), L"unset", "[E] @ : ... ending( Bad NIC GUID )"}};
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope connection(CONNECTION_KEY);
        connection.Set(L"", L"Name", row.name);
        velmor::string sName(L"unset");
        EXPECT_EQ(row.sEnd.starts_with("[V]"), TOLVA::GetAdapterIpconfigName(Adapter(row.pszGuid), sName));
        EXPECT_EQ(row.pszName, Text(sName));
        EXPECT_EQ(Transcript(row.sEnd, "TOLVA::GetAdapterIpconfigName").front(), trace.Lines().back());
    }
}

TEST_F(AdapterIdentity, WhetherTheOptionsCanBeChanged)
{
    const std::string KEY = R"([V] @ : sSubKey = "CurrentControlSet\Control\DeviceClasses\)"
                            R"({AD498944-762F-11D0-8DCB-00C04FC3358C}\)";
    const std::string FOUND = "[V] @ : Found DeviceInstance : sDeviceInstance = ";
    const struct
    {
        RegistryData first, second;
        bool bAnswer;
        std::string sMiddle;
    } rows[] = {{StringData(L"pci\\dev_x"), StringData(L"PCI\\DEV_X"), true,
                 KEY + "a\"\n" + FOUND + "\"pci\\dev_x\"\n[V] @ : Found PCI -> GUID match\n"},
                {StringData(L"PCI\\DEV_X", REG_EXPAND_SZ), StringData(L"PCI\\DEV_XY"), false,
                 KEY + "a\"\n" + KEY + "b\"\n" + FOUND + "\"PCI\\DEV_XY\"\n"}};
    TOLVA::NIC_INFO NicInfo = Adapter();
    NicInfo.sNicPci = L"PCI\\DEV_X";
    bool bAnswer = false;
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope key(DEVICE_CLASS_KEY);
        key.Set(L"a", L"DeviceInstance", row.first);
        key.Set(L"b", L"DeviceInstance", row.second);
        trace.Empty();
        EXPECT_TRUE(TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer));
        EXPECT_EQ(row.bAnswer, bAnswer);
        trace.ExpectLines(Transcript("[V] @ : starting ...\n" + row.sMiddle + "[I] @ : bCanChangeOptions = " +
                                         (row.bAnswer ? "true" : "false") + "\n[V] @ : ... ending",
                                     "TOLVA::CanChangeAdapterOptions"));
    }
    trace.Empty();
    for (const TOLVA::NIC_INFO& other : {Adapter(), NicInfo}) // now there are no device classes
    {
        bAnswer = true;
        EXPECT_FALSE(TOLVA::CanChangeAdapterOptions(other, bAnswer));
        EXPECT_FALSE(bAnswer);
    }
    EXPECT_EQ("[E] TOLVA::CanChangeAdapterOptions : ... ending( Bad NIC PCI )\n"
              "[E] TOLVA::CanChangeAdapterOptions : ... ending( velmor::Registry_System::EnumerateKeys failed) \n",
              trace.Complaints());
}

} // namespace
