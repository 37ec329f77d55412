#include "discovery_test.h"

using testing_support::StringData;

namespace
{

struct Record
{
    std::wstring sDesc, sFriendlyName, sEnum, sPci, sType, sHwAddr;

    bool operator==(const Record&) const = default;
    friend void PrintTo(const Record& record, std::ostream* pOut)
    {
        for (const auto* p :
             {&record.sDesc, &record.sFriendlyName, &record.sEnum, &record.sPci, &record.sType, &record.sHwAddr})
            *pOut << testing::PrintToString(*p) << ' ';
    }
};

Record Of(const TOLVA::NIC_INFO& NicInfo)
{
    return {Text(NicInfo.sNicDesc), Text(NicInfo.sNicFriendlyName), Text(NicInfo.sNicEnum),
            Text(NicInfo.sNicPci),  Text(NicInfo.sNicType),         Text(NicInfo.sNicHwAddr)};
}

class AdapterList : public DiscoveryTest
{
protected:
    static constexpr const wchar_t* GUID_B = L"{0B000000-0000-0000-0000-00000000000B}";

    AdapterList()
    {
        SeedAdapter();
        IP_ADAPTER_ADDRESSES& record = addresses.Add(11);
        record.FriendlyName = const_cast<wchar_t*>(L"Local Area Connection");
        record.PhysicalAddressLength = 6;
        for (BYTE i = 0; i < 6; ++i)
            record.PhysicalAddress[i] = static_cast<BYTE>(i + 10);
    }

    const Record complete = {L"Test Adapter", L"Local Area Connection", L"0007", L"PCI\\VEN_8086&DEV_1",
                             L"ETHERNET",     L"0A-0B-0C-0D-0E-0F"};
};

TEST_F(AdapterList, ACompleteAdapter)
{
    interfaces.names = {L"\\DEVICE\\TCPIP_" + std::wstring(GUID_A)};
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
        const char* pszStep;    ///< null: nothing fails
        const wchar_t* pszEnum; ///< class subkey of the first record
        std::vector<DWORD> indexCodes;
        Record first;
    } rows[] = {
        {nullptr, L"0008", {}, {L"B", L"Local Area Connection", L"0008", L"PCI\\B", L"ETHERNET", L"0A-0B-0C-0D-0E-0F"}},
        {"GetAdapterDesc", L"", {}, {L"old", L"old", L"old", L"old", L"old", L"old"}},
        {"GetAdapterFriendlyName", L"0008", {5}, {L"B", L"old", L"0008", L"PCI\\B", L"ETHERNET", L"0A-0B-0C-0D-0E-0F"}},
        {"GetAdapterPci", L"0009", {}, {L"B", L"Local Area Connection", L"0009", L"old", L"old", L"old"}},
        {"GetAdapterType", L"0008", {0, 5}, {L"B", L"Local Area Connection", L"0008", L"PCI\\B", L"old", L"old"}},
        {"GetHardwareAddress",
         L"0008",
         {0, 0, 5},
         {L"B", L"Local Area Connection", L"0008", L"PCI\\B", L"ETHERNET", L"old"}},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.pszStep != nullptr ? row.pszStep : "nothing fails");
        const testing_support::RegistryKeyScope key(std::wstring(CLASS_KEY) + L"\\" +
                                                    (*row.pszEnum != L'\0' ? row.pszEnum : L"Properties"));
        if (*row.pszEnum != L'\0')
            key.Set(L"", L"NetCfgInstanceId", StringData(GUID_B));
        key.Set(L"", L"DriverDesc", StringData(L"B"));
        if (row.pszEnum == std::wstring(L"0008"))
            key.Set(L"", L"DeviceInstanceID", StringData(L"PCI\\B"));
        interfaces = {};
        interfaces.names = {L"\\DEVICE\\TCPIP_" + std::wstring(GUID_A)};
        indexNames.clear();
        indexCodes = row.indexCodes;
        trace.Empty();

        std::vector<TOLVA::NIC_INFO> list = {{L"old", L"old", L"old", GUID_B, L"name", L"old", L"old", L"old"}};
        EXPECT_TRUE(TOLVA::GetAdapterList(list));
        ASSERT_EQ(2U, list.size());
        EXPECT_EQ(row.first, Of(list[0]));
        EXPECT_EQ(complete, Of(list[1]));
        std::vector<std::string> warnings;
        for (const std::string& sLine : trace.Lines())
            if (sLine.starts_with("[W]"))
                warnings.push_back(sLine);
        EXPECT_EQ(row.pszStep == nullptr ? std::vector<std::string>()
                                         : std::vector<std::string>{"[W] TOLVA::GetAdapterList : TOLVA::" +
                                                                    std::string(row.pszStep) + " failed)"},
                  warnings);
        EXPECT_TRUE(trace.Has("[I] TOLVA::GetAdapterList : uiNicCount = 2"));
    }
}

TEST_F(AdapterList, TheLastStepFailsWithoutDeviceClasses)
{
    const testing_support::ImportPatch<decltype(&::RegOpenKeyExW)> patch(
        "RegOpenKeyExW",
        [&](HKEY hKey, const wchar_t* pszPath, DWORD dwOptions, REGSAM access, HKEY* phKey) -> LSTATUS {
            return pszPath == std::wstring(DEVICE_CLASS_KEY)
                       ? ERROR_FILE_NOT_FOUND
                       : patch.Original()(hKey, pszPath, dwOptions, access, phKey);
        });
    std::vector<TOLVA::NIC_INFO> list = {Adapter()};
    interfaces.claimed = 0;
    EXPECT_TRUE(TOLVA::GetAdapterList(list));
    EXPECT_EQ(complete, Of(list[0]));
    EXPECT_TRUE(
        trace.Has("[E] TOLVA::CanChangeAdapterOptions : ... ending( velmor::Registry_System::EnumerateKeys failed) "));
    EXPECT_TRUE(trace.Has("[W] TOLVA::GetAdapterList : TOLVA::CanChangeAdapterOptions failed)"));
}

TEST_F(AdapterList, ASecondCallAppendsAndCompletesAgain)
{
    interfaces.names = {L"\\DEVICE\\TCPIP_" + std::wstring(GUID_A)};
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
