#include "discovery_test.h"

using testing_support::RegistryData;
using testing_support::StringData;

namespace
{

/// Description, friendly name, class subkey, device, type and hardware address.
std::wstring Of(const TOLVA::NIC_INFO& NicInfo)
{
    std::wstring sAll;
    for (const auto* p : {&NicInfo.sNicDesc, &NicInfo.sNicFriendlyName, &NicInfo.sNicEnum, &NicInfo.sNicPci,
                          &NicInfo.sNicType, &NicInfo.sNicHwAddr})
        sAll += Text(*p) + L'|';
    return sAll;
}

class AdapterList : public DiscoveryTest
{
protected:
    static constexpr const wchar_t* GUID_B = L"{0B000000-0000-0000-0000-00000000000B}";

    AdapterList()
    {
        SeedAdapter();
        interfaces.names = {L"\\DEVICE\\TCPIP_" + std::wstring(GUID_A)};
        IP_ADAPTER_ADDRESSES& record = addresses.Add(11);
        record.FriendlyName = const_cast<wchar_t*>(L"Local Area Connection");
        record.PhysicalAddressLength = 6;
        for (BYTE i = 0; i < 6; ++i)
            record.PhysicalAddress[i] = static_cast<BYTE>(i + 10);
    }

    std::string Warnings() const
    {
        std::string sWarnings;
        for (const std::string& sLine : trace.Lines())
            sWarnings += sLine.starts_with("[W]") ? sLine + '\n' : "";
        return sWarnings;
    }

    const std::wstring complete =
        L"Test Adapter|Local Area Connection|0007|PCI\\VEN_8086&DEV_1|ETHERNET|0A-0B-0C-0D-0E-0F|";
};

TEST_F(AdapterList, ACompleteAdapter)
{
    std::vector<TOLVA::NIC_INFO> list;
    ASSERT_TRUE(TOLVA::GetAdapterList(list));
    ASSERT_EQ(1U, list.size());
    EXPECT_EQ(GUID_A, Text(list[0].sNicGuid));
    EXPECT_EQ(interfaces.names[0], Text(list[0].sNicName));
    EXPECT_EQ(complete, Of(list[0]));
    trace.ExpectLines(Transcript(R"(
[V] TOLVA::GetAdapterList : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : starting ...
[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : NicInfo.sNicName = "\DEVICE\TCPIP_<guid>"
[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : ... ending
[V] TOLVA::GetAdapterEnumAndDesc : starting ...
[V] TOLVA::GetAdapterEnumAndDesc : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterEnumAndDesc : Found NetCfgInstanceId : sNetCfgInstanceId = "<guid>"
[V] TOLVA::GetAdapterEnumAndDesc : Found correct enum : NicInfo.sNicEnum = "0007"
[V] TOLVA::GetAdapterEnumAndDesc : NicInfo.sNicDesc = "Test Adapter"
[V] TOLVA::GetAdapterEnumAndDesc : sInfPath = "oem1.inf"
[V] TOLVA::GetAdapterEnumAndDesc : bFoundEnum = true
[V] TOLVA::GetAdapterFriendlyName : starting ...
[V] TOLVA::GetAdapterIndex : starting ...
[V] TOLVA::GetAdapterIndex : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterIndex : ulAdapterIndex = 11
[V] TOLVA::GetAdapterIndex : ... ending
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName : starting ...
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName : ulIndex = 11
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : starting ...
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : IPv4 and IPv6
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : ... ending
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName : sNicFriendlyName = "Local Area Connection"
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName : ... ending : bFound = true
[V] TOLVA::GetAdapterFriendlyName : ... ending
[V] TOLVA::GetAdapterPCI : starting ...
[V] TOLVA::GetAdapterPCI : NicInfo.sNicEnum = "0007"
[I] TOLVA::GetAdapterPCI : NicInfo.sNicPci = "PCI\VEN_8086&DEV_1"
[V] TOLVA::GetAdapterPCI : ... ending
[V] TOLVA::GetAdapterType : starting ...
[V] TOLVA::GetAdapterIndex : starting ...
[V] TOLVA::GetAdapterIndex : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterIndex : ulAdapterIndex = 11
[V] TOLVA::GetAdapterIndex : ... ending
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType : starting ...
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType : ulIndex = 11
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : starting ...
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : IPv4 and IPv6
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : ... ending
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType : sNicType = "ETHERNET"
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType : ... ending : bFound = true
[V] TOLVA::GetAdapterType : ... ending
[V] TOLVA::GetHardwareAddress : starting ...
[V] TOLVA::GetAdapterIndex : starting ...
[V] TOLVA::GetAdapterIndex : NicInfo.sNicGuid = "<guid>"
[V] TOLVA::GetAdapterIndex : ulAdapterIndex = 11
[V] TOLVA::GetAdapterIndex : ... ending
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetHardwareAddress : starting ...
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : starting ...
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : IPv4 and IPv6
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : ... ending
[V] TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS : pByteArray = 0a 0b 0c 0d 0e 0f )"
                                 "\n"
                                 R"([V] TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS : m_bByteArray = 0a 0b 0c 0d 0e 0f )"
                                 R"(
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetHardwareAddress : sHwAddr = "0A-0B-0C-0D-0E-0F"
[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetHardwareAddress : ... ending : bFound = true
[V] TOLVA::GetHardwareAddress : ... ending
[V] TOLVA::CanChangeAdapterOptions : starting ...
[V] TOLVA::CanChangeAdapterOptions : sSubKey = "CurrentControlSet\Control\DeviceClasses\{AD498944-762F-11D0-8DCB-00C04FC3358C}\##?#1"
[V] TOLVA::CanChangeAdapterOptions : Found DeviceInstance : sDeviceInstance = "pci\ven_8086&dev_1"
[V] TOLVA::CanChangeAdapterOptions : Found PCI -> GUID match
[I] TOLVA::CanChangeAdapterOptions : bCanChangeOptions = true
[V] TOLVA::CanChangeAdapterOptions : ... ending
[I] TOLVA::GetAdapterList : uiNicCount = 1
[V] TOLVA::GetAdapterList : ... ending
)"));
}

/// Each row makes one step fail for the first of two records; the second has to be completed all the same.
TEST_F(AdapterList, AFailingStepEndsTheCompletionOfItsAdapterOnly)
{
    const struct
    {
        std::string sStep;
        const wchar_t* pszEnum; ///< class subkey of the first record
        std::vector<DWORD> indexCodes;
        std::wstring sFirst;
    } rows[] = {{"", L"0008", {}, L"B|Local Area Connection|0008|PCI\\B|ETHERNET|0A-0B-0C-0D-0E-0F|"},
                {"AdapterDesc", nullptr, {}, L"old|old|old|old|old|old|"},
                {"AdapterFriendlyName", L"0008", {5}, L"B|old|0008|PCI\\B|ETHERNET|0A-0B-0C-0D-0E-0F|"},
                {"AdapterPci", L"0009", {}, L"B|Local Area Connection|0009|old|old|old|"},
                {"AdapterType", L"0008", {0, 5}, L"B|Local Area Connection|0008|PCI\\B|old|old|"},
                {"HardwareAddress", L"0008", {0, 0, 5}, L"B|Local Area Connection|0008|PCI\\B|ETHERNET|old|"}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.sStep);
        std::optional<testing_support::RegistryKeyScope> key;
        if (row.pszEnum != nullptr)
        {
            key.emplace(std::wstring(CLASS_KEY) + L"\\" + row.pszEnum);
            key->Set(L"", L"NetCfgInstanceId", StringData(GUID_B));
            key->Set(L"", L"DriverDesc", StringData(L"B"));
            key->Set(L"", L"DeviceInstanceID", row.sStep == "AdapterPci" ? RegistryData() : StringData(L"PCI\\B"));
        }
        interfaces.calls = 0;
        indexNames.clear();
        indexCodes = row.indexCodes;
        trace.Empty();
        std::vector<TOLVA::NIC_INFO> list = {{L"old", L"old", L"old", GUID_B, L"name", L"old", L"old", L"old"}};
        EXPECT_TRUE(TOLVA::GetAdapterList(list));
        ASSERT_EQ(2U, list.size());
        EXPECT_EQ(row.sFirst, Of(list[0]));
        EXPECT_EQ(complete, Of(list[1]));
        EXPECT_TRUE(trace.Has("[I] TOLVA::GetAdapterList : uiNicCount = 2"));
        EXPECT_EQ(row.sStep.empty() ? "" : "[W] TOLVA::GetAdapterList : TOLVA::Get" + row.sStep + " failed)\n",
                  Warnings());
    }
}

TEST_F(AdapterList, TheLastStepFailsWithoutDeviceClasses)
{
    const auto patch = PATCH_IMPORT(
        RegOpenKeyExW,
        [](auto original, HKEY hKey, const wchar_t* pszPath, DWORD dwOptions, REGSAM access, HKEY* phKey) -> LSTATUS {
            return pszPath == std::wstring(DEVICE_CLASS_KEY) ? ERROR_FILE_NOT_FOUND
                                                             : original(hKey, pszPath, dwOptions, access, phKey);
        });
    std::vector<TOLVA::NIC_INFO> list;
    EXPECT_TRUE(TOLVA::GetAdapterList(list));
    EXPECT_EQ(complete, Of(list.at(0)));
    EXPECT_EQ("[W] TOLVA::GetAdapterList : TOLVA::CanChangeAdapterOptions failed)\n", Warnings());
}

TEST_F(AdapterList, ASecondCallAppendsAndCompletesAgain)
{
    std::vector<TOLVA::NIC_INFO> list;
    EXPECT_TRUE(TOLVA::GetAdapterList(list));
    addresses.entries[0].record.FriendlyName = const_cast<wchar_t*>(L"Renamed");
    EXPECT_TRUE(TOLVA::GetAdapterList(list));
    ASSERT_EQ(2U, list.size());
    EXPECT_EQ(L"Renamed", Text(list[0].sNicFriendlyName));
    EXPECT_EQ(L"Renamed", Text(list[1].sNicFriendlyName));
    EXPECT_EQ(4U, interfaces.calls) << "nothing is kept between calls";
}

} // namespace
