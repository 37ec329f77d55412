#include "discovery_test.h"

using testing_support::DwordData;
using testing_support::RegistryData;
using testing_support::StringData;

namespace
{

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
    const struct
    {
        std::wstring sFirst, sSecond; ///< NetCfgInstanceId of the subkeys 0001 and 0002
        const wchar_t* pszEnum;
    } rows[] = {{L"{0a1b2c3d-5e6f-4711-8123-9d0e1f2a3b4c}", L"{1}", L"0001"},
                {GUID_A, GUID_A, L"0001"},
                {L"{1}", GUID_A, L"0002"},
                {GUID_A + std::wstring(L"x"), std::wstring(GUID_A, 20), L""}};
    for (const auto& row : rows)
    {
        const testing_support::RegistryKeyScope first(CLASS_KEY + std::wstring(L"\\0001"));
        const testing_support::RegistryKeyScope second(CLASS_KEY + std::wstring(L"\\0002"));
        second.Set(L"", L"NetCfgInstanceId", StringData(row.sSecond));
        first.Set(L"", L"NetCfgInstanceId", StringData(row.sFirst));
        EXPECT_EQ(row.pszEnum, Text(Completed(Adapter()).sNicEnum)) << testing::PrintToString(row.sFirst);
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
        const wchar_t* pszPci;
        std::string sEnd;
    } rows[] = {{StringData(L"PCI\\D"), StringData(L"PCI\\C"), L"PCI\\D", "[V] TOLVA::GetAdapterPCI : ... ending"},
                {{}, StringData(L"PCI\\C"), L"PCI\\C", "[V] TOLVA::GetAdapterPCI : ... ending"},
                {{}, {}, L"kept", "[E] TOLVA::GetAdapterPCI : ... ending( Get 'PnpInstanceID' failed)"}};
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
        EXPECT_EQ(row.device == RegistryData(), trace.Has("[I] TOLVA::GetAdapterPCI : 'DeviceInstanceID' not found"));
        EXPECT_EQ(row.sEnd, trace.LinesOf("TOLVA::GetAdapterPCI").back());
    }
}

TEST_F(AdapterIdentity, AConnectionNameNeedsAGuid)
{
    velmor::string sName(L"before");
    EXPECT_FALSE(TOLVA::GetAdapterIpconfigName(Adapter(L""), sName));
    EXPECT_FALSE(TOLVA::GetAdapterIpconfigName(Adapter(), sName)) << "there is no such key";
    EXPECT_EQ(L"before", Text(sName));
    EXPECT_EQ("[E] TOLVA::GetAdapterIpconfigName : ... ending( Bad NIC GUID )\n"
              "[E] TOLVA::GetAdapterIpconfigName : ... ending( Get 'Name' failed )\n",
              trace.Complaints());
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
