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

    Completed(Adapter(L"{NOBODY}"));
    EXPECT_EQ("[V] TOLVA::GetAdapterEnumAndDesc : bFoundEnum = false",
              trace.LinesOf("TOLVA::GetAdapterEnumAndDesc").back());
}

TEST_F(AdapterIdentity, NothingToSearchWith)
{
    Completed(Adapter(L""));
    EXPECT_EQ(Transcript(R"(
[V] TOLVA::GetAdapterEnumAndDesc : starting ...
[E] TOLVA::GetAdapterEnumAndDesc : ... ending( Bad NIXC GUID )
)"),
              trace.LinesOf("TOLVA::GetAdapterEnumAndDesc"));

    const auto patch = PATCH_IMPORT(RegOpenKeyExW, [](auto...) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    Completed(Adapter());
    EXPECT_EQ(Transcript(R"(
[V] TOLVA::GetAdapterEnumAndDesc : starting ...
[V] TOLVA::GetAdapterEnumAndDesc : NicInfo.sNicGuid = "<guid>"
[E] TOLVA::GetAdapterEnumAndDesc : ... ending( velmor::Registry_System::EnumerateKeys failed) )"
                         "\n"),
              trace.LinesOf("TOLVA::GetAdapterEnumAndDesc"));
}

TEST_F(AdapterIdentity, DeviceInstanceAndItsFallback)
{
    const std::string START = "\n[V] TOLVA::GetAdapterPCI : starting ...\n"
                              "[V] TOLVA::GetAdapterPCI : NicInfo.sNicEnum = \"0001\"\n";
    const std::string NOT_FOUND = "[I] TOLVA::GetAdapterPCI : 'DeviceInstanceID' not found\n";
    const std::string END = "\n[V] TOLVA::GetAdapterPCI : ... ending\n";
    const RegistryData none;
    const struct
    {
        RegistryData device;
        RegistryData connection;
        const wchar_t* pszPci;
        std::string sTranscript;
    } rows[] = {
        {StringData(L"PCI\\D"), StringData(L"PCI\\C"), L"PCI\\D",
         START + R"([I] TOLVA::GetAdapterPCI : NicInfo.sNicPci = "PCI\D")" + END},
        {none, StringData(L"PCI\\C"), L"PCI\\C",
         START + NOT_FOUND + R"([I] TOLVA::GetAdapterPCI : NicInfo.sNicPci = "PCI\C")" + END},
        {StringData(L"PCI\\D", REG_MULTI_SZ), StringData(L"PCI\\C"), L"PCI\\C",
         START + NOT_FOUND + R"([I] TOLVA::GetAdapterPCI : NicInfo.sNicPci = "PCI\C")" + END},
        {none, none, L"kept",
         START + NOT_FOUND + "[E] TOLVA::GetAdapterPCI : ... ending( Get 'PnpInstanceID' failed)\n"},
        {none, DwordData(1), L"kept",
         START + NOT_FOUND + "[E] TOLVA::GetAdapterPCI : ... ending( Get 'PnpInstanceID' failed)\n"},
    };
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope key(std::wstring(CLASS_KEY) + L"\\0001");
        const testing_support::RegistryKeyScope connection(CONNECTION_KEY);
        key.Set(L"", L"NetCfgInstanceId", StringData(GUID_A));
        if (row.device != none)
            key.Set(L"", L"DeviceInstanceID", row.device);
        if (row.connection != none)
            connection.Set(L"", L"PnpInstanceID", row.connection);
        TOLVA::NIC_INFO NicInfo = Adapter();
        NicInfo.sNicPci = L"kept";
        EXPECT_EQ(row.pszPci, Text(Completed(NicInfo).sNicPci));
        EXPECT_EQ(Transcript(row.sTranscript), trace.LinesOf("TOLVA::GetAdapterPCI"));
    }
}

TEST_F(AdapterIdentity, ConnectionName)
{
    const RegistryData none;
    const struct
    {
        const wchar_t* pszGuid;
        RegistryData name;
        const wchar_t* pszName; ///< "unset" for a failure
        const char* pszTranscript;
    } rows[] = {
        {GUID_A, StringData(L"B\u00FCro \u6771 2"), L"B\u00FCro \u6771 2",
         R"(
[V] TOLVA::GetAdapterIpconfigName : starting ...
[V] TOLVA::GetAdapterIpconfigName : sIpconfigName = "B)"
         "\xC3\xBC"
         "ro \xE6\x9D\xB1"
         R"( 2"
[V] TOLVA::GetAdapterIpconfigName : ... ending
)"},
        {GUID_A, none, L"unset", R"(
[V] TOLVA::GetAdapterIpconfigName : starting ...
[E] TOLVA::GetAdapterIpconfigName : ... ending( Get 'Name' failed )
)"},
        {GUID_A, StringData(L"LAN", REG_EXPAND_SZ), L"unset", R"(
[V] TOLVA::GetAdapterIpconfigName : starting ...
[E] TOLVA::GetAdapterIpconfigName : ... ending( Get 'Name' failed )
)"},
        {L"", StringData(L"LAN"), L"unset", R"(
[V] TOLVA::GetAdapterIpconfigName : starting ...
[E] TOLVA::GetAdapterIpconfigName : ... ending( Bad NIC GUID )
)"},
    };
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope connection(CONNECTION_KEY);
        if (row.name != none)
            connection.Set(L"", L"Name", row.name);
        trace.Empty();
        velmor::string sName(L"unset");
        EXPECT_EQ(row.pszName != std::wstring(L"unset"), TOLVA::GetAdapterIpconfigName(Adapter(row.pszGuid), sName));
        EXPECT_EQ(row.pszName, Text(sName));
        trace.ExpectLines(Transcript(row.pszTranscript));
    }
}

TEST_F(AdapterIdentity, WhetherTheOptionsCanBeChanged)
{
    const std::string SUBKEY = "[V] TOLVA::CanChangeAdapterOptions : sSubKey = "
                               R"("CurrentControlSet\Control\DeviceClasses\{AD498944-762F-11D0-8DCB-00C04FC3358C}\)";
    const std::string FOUND = "[V] TOLVA::CanChangeAdapterOptions : Found DeviceInstance : sDeviceInstance = ";
    const std::string MATCH = "[V] TOLVA::CanChangeAdapterOptions : Found PCI -> GUID match\n";
    const struct
    {
        std::vector<std::pair<const wchar_t*, RegistryData>> instances;
        bool bAnswer;
        std::string sMiddle;
    } rows[] = {
        {{{L"a", StringData(L"pci\\dev_x")}, {L"b", StringData(L"PCI\\DEV_X")}},
         true,
         SUBKEY + "a\"\n" + FOUND + "\"pci\\dev_x\"\n" + MATCH},
        {{{L"a", StringData(L"PCI\\DEV_X", REG_EXPAND_SZ)}, {L"b", StringData(L"PCI\\DEV_XY")}},
         false,
         SUBKEY + "a\"\n" + SUBKEY + "b\"\n" + FOUND + "\"PCI\\DEV_XY\"\n"},
        {{}, false, ""},
    };
    TOLVA::NIC_INFO NicInfo = Adapter();
    NicInfo.sNicPci = L"PCI\\DEV_X";
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope key(DEVICE_CLASS_KEY);
        for (const auto& [pszSubKey, data] : row.instances)
            key.Set(pszSubKey, L"DeviceInstance", data);
        trace.Empty();
        bool bAnswer = !row.bAnswer;
        EXPECT_TRUE(TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer));
        EXPECT_EQ(row.bAnswer, bAnswer);
        trace.ExpectLines(
            Transcript("[V] TOLVA::CanChangeAdapterOptions : starting ...\n" + row.sMiddle +
                       "[I] TOLVA::CanChangeAdapterOptions : bCanChangeOptions = " + (row.bAnswer ? "true" : "false") +
                       "\n[V] TOLVA::CanChangeAdapterOptions : ... ending"));
    }

    trace.Empty();
    bool bAnswer = true;
    EXPECT_FALSE(TOLVA::CanChangeAdapterOptions(Adapter(), bAnswer));
    EXPECT_FALSE(bAnswer);
    bAnswer = true;
    EXPECT_FALSE(TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer)) << "there are no device classes";
    EXPECT_FALSE(bAnswer);
    trace.ExpectLines(
        {"[V] TOLVA::CanChangeAdapterOptions : starting ...",
         "[E] TOLVA::CanChangeAdapterOptions : ... ending( Bad NIC PCI )",
         "[V] TOLVA::CanChangeAdapterOptions : starting ...",
         "[E] TOLVA::CanChangeAdapterOptions : ... ending( velmor::Registry_System::EnumerateKeys failed) "});
}

} // namespace
