#include "discovery_test.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include <support/trace/call_frame.h>

using namespace testing_support;

namespace
{

DWORD Forced(const std::vector<DWORD>& codes, std::size_t call) noexcept
{
    return call < codes.size() ? codes[call] : NO_ERROR;
}

void ReplaceAll(std::string& text, std::string_view what, std::string_view with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

} // namespace

std::vector<std::string> Transcript(std::string text, std::string_view sOperation)
{
    ReplaceAll(text, "@", sOperation);
    ReplaceAll(text, "<guid>", "{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C}");
    std::vector<std::string> lines;
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1)
    {
        end = std::min(text.find('\n', begin), text.size());
        if (end > begin)
            lines.push_back(text.substr(begin, end - begin));
    }
    return lines;
}

DWORD FakeInterfaceTable::Answer(IP_INTERFACE_INFO* pTable, ULONG* pulSize)
{
    const std::size_t call = calls++;
    const auto ulNeeded =
        static_cast<ULONG>(offsetof(IP_INTERFACE_INFO, Adapter) + names.size() * sizeof(IP_ADAPTER_INDEX_MAP));
    if (call < codes.size())
    {
        if (codes[call] == ERROR_INSUFFICIENT_BUFFER)
            *pulSize = ulNeeded;
        if (codes[call] != NO_ERROR || pTable == nullptr)
            return codes[call];
    }
    if (pTable == nullptr || *pulSize < ulNeeded)
    {
        *pulSize = ulNeeded;
        return ERROR_INSUFFICIENT_BUFFER;
    }
    const auto* pBytes = reinterpret_cast<const unsigned char*>(pTable);
    bBufferWasZero = bBufferWasZero && std::all_of(pBytes, pBytes + *pulSize, [](unsigned char b) { return b == 0; });
    pTable->NumAdapters = claimed.value_or(static_cast<LONG>(names.size()));
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        IP_ADAPTER_INDEX_MAP& entry = pTable->Adapter[i];
        entry.Index = 0xBADBAD; // of no use to the library
        std::copy_n(names[i].c_str(), std::min(names[i].size() + 1, std::size(entry.Name)), entry.Name);
    }
    return NO_ERROR;
}

IP_ADAPTER_ADDRESSES& FakeAddressTable::Add(DWORD dwIndex)
{
    IP_ADAPTER_ADDRESSES& record = entries.emplace_back().record;
    record.IfIndex = dwIndex;
    record.Ipv6IfIndex = dwIndex;
    record.IfType = IF_TYPE_ETHERNET_CSMACD;
    record.OperStatus = IfOperStatusUp;
    return record;
}

ULONG FakeAddressTable::Size() const noexcept
{
    return entries.empty()
               ? 0
               : static_cast<ULONG>((entries.size() - 1) * sizeof(IP_ADAPTER_ADDRESSES)) + entries.back().ulLength;
}

DWORD FakeAddressTable::Answer(ULONG ulFamily, ULONG ulFlags, void* pReserved, IP_ADAPTER_ADDRESSES* pTable,
                               ULONG* pulSize)
{
    EXPECT_EQ(nullptr, pReserved);
    calls.push_back({ulFamily, ulFlags, *pulSize});
    const DWORD dwForced = Forced(codes, calls.size() - 1);
    const ULONG ulGiven = std::exchange(*pulSize, Size());
    if (dwForced != NO_ERROR)
        return dwForced;
    if (entries.empty())
        return ERROR_NO_DATA;
    if (ulGiven < Size())
        return ERROR_BUFFER_OVERFLOW;
    std::memset(static_cast<void*>(pTable), 0xA5, ulGiven);
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        IP_ADAPTER_ADDRESSES record = entries[i].record;
        record.Length = entries[i].ulLength;
        record.Next = i + 1 < entries.size() ? &pTable[i + 1] : nullptr;
        std::memcpy(static_cast<void*>(&pTable[i]), &record, record.Length);
    }
    return NO_ERROR;
}

DiscoveryTest::DiscoveryTest() : m_uiHandles(CountHandles())
{
    ADD_PATCH(patches, GetInterfaceInfo,
              [this](IP_INTERFACE_INFO* pTable, ULONG* pulSize) { return interfaces.Answer(pTable, pulSize); });
    ADD_PATCH(patches, GetAdaptersAddresses, [this](auto... arguments) { return addresses.Answer(arguments...); });
    ADD_PATCH(patches, GetAdapterIndex, [this](wchar_t* pszName, ULONG* pulIndex) {
        indexNames.emplace_back(pszName);
        *pulIndex = ulIndex;
        return Forced(indexCodes, indexNames.size() - 1);
    });
    // What the platform and the run time open for good when they are first used is no leak.
    static bool bWarm = false;
    if (!std::exchange(bWarm, true))
    {
        TOLVA::NIC_INFO NicInfo = Adapter();
        NicInfo.sNicPci = L"warm";
        bool bAnswer = false;
        TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer);
        EXPECT_STREQ(L"<invalid>", TextOf(velmor::ip_address(velmor::string(L"none"))).c_str());
        trace.ExpectLines(trace.Lines());
        m_uiHandles = CountHandles();
    }
    trace.Empty();
}

DiscoveryTest::~DiscoveryTest()
{
    EXPECT_EQ(m_uiHandles, CountHandles()) << "handles are still open";
}

TOLVA::NIC_INFO DiscoveryTest::Adapter(const wchar_t* pszGuid)
{
    TOLVA::NIC_INFO NicInfo;
    NicInfo.sNicGuid = pszGuid;
    return NicInfo;
}

void DiscoveryTest::Seed(const std::wstring& sKey, const std::wstring& sName, const RegistryData& data)
{
    auto& key = m_keys[sKey];
    if (!key)
        key = std::make_unique<RegistryKeyScope>(sKey);
    if (!sName.empty())
        key->Set(L"", sName, data);
}

void DiscoveryTest::SeedAdapter()
{
    const std::wstring sClass = std::wstring(CLASS_KEY) + L"\\0007";
    Seed(sClass, L"NetCfgInstanceId", StringData(GUID_A));
    Seed(sClass, L"DriverDesc", StringData(L"Test Adapter"));
    Seed(sClass, L"InfPath", StringData(L"oem1.inf"));
    Seed(sClass, L"DeviceInstanceID", StringData(L"PCI\\VEN_8086&DEV_1"));
    Seed(std::wstring(DEVICE_CLASS_KEY) + L"\\##?#1", L"DeviceInstance", StringData(L"pci\\ven_8086&dev_1"));
}
