#include "comparisons.h"

#include <cwchar>
#include <memory>
#include <stdexcept>
#include <vector>

#include <support/platform/handles.h>
#include <support/trace/trace.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr unsigned int SETTING_ERRORS = 1;
constexpr const wchar_t* CLASS_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr const wchar_t* DEVICES_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";
constexpr const wchar_t* OFFLINE_KEY = L"{D0B3D3F4-05F2-4671-80D5-B569ABD77343}\\";

std::wstring Child(const wchar_t* pszKey, const std::wstring& sName)
{
    return std::wstring(pszKey) + L"\\" + sName;
}

void WriteText(const std::wstring& sKey, const wchar_t* pszName, const std::wstring& sText)
{
    const auto size = static_cast<DWORD>((sText.size() + 1) * sizeof(wchar_t));
    if (::RegSetKeyValueW(HKEY_LOCAL_MACHINE, sKey.c_str(), pszName, REG_SZ, sText.c_str(), size) != ERROR_SUCCESS)
        throw std::runtime_error("the registry cannot be prepared");
}

/// What an installed system's registry says of each adapter, and Wine's does not; gone again with the object.
class SeededRegistry
{
public:
    SeededRegistry()
    {
        std::vector<TOLVA::NIC_INFO> adapters;
        if (!TOLVA::GetAdapterList(adapters))
            throw std::runtime_error("no adapter to list");
        for (std::size_t i = 0; i < adapters.size(); ++i)
        {
            const std::wstring sNumber = L"000" + std::to_wstring(i);
            const std::wstring sDevice = L"PCI\\VEN_8086&DEV_100E\\" + sNumber;
            WriteText(Child(CLASS_KEY, sNumber), L"NetCfgInstanceId", adapters[i].sNicGuid.c_str());
            WriteText(Child(CLASS_KEY, sNumber), L"DriverDesc", L"Benchmark Adapter");
            WriteText(Child(CLASS_KEY, sNumber), L"InfPath", L"oem0.inf");
            WriteText(Child(CLASS_KEY, sNumber), L"DeviceInstanceID", sDevice);
            WriteText(Child(DEVICES_KEY, sNumber), L"DeviceInstance", sDevice);
        }
    }
    SeededRegistry(const SeededRegistry&) = delete;
    SeededRegistry& operator=(const SeededRegistry&) = delete;
    ~SeededRegistry()
    {
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, CLASS_KEY);
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, DEVICES_KEY);
    }
};

velmor::UniqueKey Open(const std::wstring& sKey)
{
    velmor::UniqueKey key;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, sKey.c_str(), 0, KEY_READ, key.Receive());
    return key;
}

std::wstring ReadText(const std::wstring& sKey, const wchar_t* pszName)
{
    wchar_t text[256] = {};
    DWORD dwType = 0;
    DWORD dwSize = 0;
    const velmor::UniqueKey key = Open(sKey);
    ::RegQueryValueExW(key.Get(), pszName, nullptr, &dwType, nullptr, &dwSize);
    ::RegQueryValueExW(key.Get(), pszName, nullptr, &dwType, reinterpret_cast<BYTE*>(text), &dwSize);
    return text;
}

std::vector<std::wstring> Subkeys(const wchar_t* pszKey)
{
    std::vector<std::wstring> names;
    const velmor::UniqueKey key = Open(pszKey);
    wchar_t name[255];
    DWORD length = std::size(name);
    for (DWORD i = 0; ::RegEnumKeyExW(key.Get(), i, name, &length, nullptr, nullptr, nullptr, nullptr) == 0; ++i)
    {
        names.emplace_back(name, length);
        length = std::size(name);
    }
    return names;
}

/// The subkeys up to the one whose value is `sText`.
std::wstring FindSubkey(const wchar_t* pszKey, const wchar_t* pszName, const std::wstring& sText)
{
    for (const std::wstring& sName : Subkeys(pszKey))
        if (::_wcsicmp(ReadText(Child(pszKey, sName), pszName).c_str(), sText.c_str()) == 0)
            return Child(pszKey, sName);
    return {};
}

/// One question to the adapter-address table: the index, the size, the table.
void AskAddressTable(const std::wstring& sDevice)
{
    ULONG ulIndex = 0;
    ::GetAdapterIndex(const_cast<wchar_t*>(sDevice.c_str()), &ulIndex);
    std::vector<unsigned char> buffer(440);
    ULONG ulSize = 440;
    constexpr ULONG FLAGS = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST;
    const auto Table = [&] { return reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data()); };
    if (::GetAdaptersAddresses(AF_UNSPEC, FLAGS, nullptr, Table(), &ulSize) == ERROR_BUFFER_OVERFLOW)
    {
        buffer.resize(ulSize);
        ::GetAdaptersAddresses(AF_UNSPEC, FLAGS, nullptr, Table(), &ulSize);
    }
}

/// The platform calls of one adapter's record, in the library's order. Each registry step also looks for an offline
/// hive.
void AskForAdapter(const std::wstring& sDevice)
{
    const std::wstring sGuid = sDevice.substr(sDevice.find(L'{'));
    const std::wstring sKey = FindSubkey(CLASS_KEY, L"NetCfgInstanceId", sGuid);
    ReadText(sKey, L"DriverDesc");
    ReadText(sKey, L"InfPath");
    Open(OFFLINE_KEY);
    AskAddressTable(sDevice);
    const std::wstring sInstance = ReadText(sKey, L"DeviceInstanceID");
    Open(OFFLINE_KEY);
    AskAddressTable(sDevice);
    AskAddressTable(sDevice);
    FindSubkey(DEVICES_KEY, L"DeviceInstance", sInstance);
    Open(OFFLINE_KEY);
}

void AskForAllAdapters()
{
    ULONG ulSize = 0;
    ::GetInterfaceInfo(nullptr, &ulSize);
    std::vector<unsigned char> buffer(ulSize);
    auto* pTable = reinterpret_cast<IP_INTERFACE_INFO*>(buffer.data());
    ::GetInterfaceInfo(pTable, &ulSize);
    for (LONG i = 0; i < pTable->NumAdapters; ++i)
        AskForAdapter(pTable->Adapter[i].Name);
}

} // namespace

Comparison AdapterList()
{
    auto pRegistry = std::make_shared<SeededRegistry>();
    const auto Ours = [pRegistry](int repetitions) {
        TheTrace.SetTraceLevel(SETTING_ERRORS);
        for (int i = 0; i < repetitions; ++i)
        {
            std::vector<TOLVA::NIC_INFO> adapters;
            if (!TOLVA::GetAdapterList(adapters) || adapters.front().sNicHwAddr.empty())
                throw std::runtime_error("the list is not complete");
        }
    };
    const auto Peer = [](int repetitions) {
        for (int i = 0; i < repetitions; ++i)
            AskForAllAdapters();
    };
    return {"GetAdapterList / its platform calls", Ours, Peer, 3, 1.15};
}
