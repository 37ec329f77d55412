#include "adapters/adapter_diagnosis.h"

#include <string_view>
#include <utility>

#include "adapters/installed_adapters.h"
#include "system/registry.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

constexpr std::wstring_view CLASS_KEYS =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr std::wstring_view LAN_DEVICES =
    L"SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";

constexpr const wchar_t* INSTANCE_VALUE = L"NetCfgInstanceId";
constexpr const wchar_t* CLASS_DEVICE_VALUE = L"DeviceInstanceID";
constexpr const wchar_t* CONNECTION_DEVICE_VALUE = L"PnpInstanceID";
constexpr const wchar_t* INTERFACE_DEVICE_VALUE = L"DeviceInstance";

/// The first key directly below the parent that has this text as its value; empty when there is none.
std::wstring FindKey(std::wstring_view parent, const wchar_t* pszValue, const velmor::string& sWanted)
{
    const std::wstring sParent(parent);
    for (const std::wstring& sName : SubKeys(sParent))
    {
        std::wstring sKey = sParent + L'\\' + sName;
        const auto text = ReadText(sKey, pszValue);
        if (text && EqualIgnoringCase(*text, sWanted))
            return sKey;
    }
    return {};
}

std::string PathOf(std::wstring_view key)
{
    return "HKLM\\" + ToUtf8(key);
}

/// Where the registry tells of one adapter.
struct AdapterKeys
{
    std::wstring sConnection;
    std::wstring sClass; ///< empty when nothing tells which it is
    bool bClassFound;    ///< by the library's rule; else the class key is that of the same device

    explicit AdapterKeys(const velmor::string& sGuid)
        : sConnection(std::wstring(CONNECTIONS) + L'\\' + sGuid.c_str() + L"\\Connection"),
          sClass(FindKey(CLASS_KEYS, INSTANCE_VALUE, sGuid)),
          bClassFound(!sClass.empty())
    {
        const auto device = ReadText(sConnection, CONNECTION_DEVICE_VALUE);
        if (!bClassFound && device && !device->empty())
            sClass = FindKey(CLASS_KEYS, CLASS_DEVICE_VALUE, *device);
    }
};

/// A value that the library takes something from.
struct Source
{
    std::wstring AdapterKeys::*pKey;
    const wchar_t* pszValue;
};

/// Something that is taken from the first of its sources that is there.
struct Item
{
    std::vector<Source> sources;
    bool bIncomplete;
    const char* pszWithout;
};

const Item ITEMS[] = {
    {{{&AdapterKeys::sClass, L"DriverDesc"}}, true, "it has no description"},
    {{{&AdapterKeys::sClass, CLASS_DEVICE_VALUE}, {&AdapterKeys::sConnection, CONNECTION_DEVICE_VALUE}},
     true,
     "its device is not known, and is neither enabled nor disabled"},
    {{{&AdapterKeys::sConnection, L"Name"}}, true, "neither netsh nor ipconfig can be told which adapter is meant"},
    {{{&AdapterKeys::sConnection, CONNECTION_DEVICE_VALUE}},
     false,
     "once the adapter is disabled, zelkctl does not find it again"}};

/// Something that is taken from the system's adapter-address table, once the registry has told what comes before it.
struct TableItem
{
    velmor::string TOLVA::NIC_INFO::*pBefore;
    velmor::string TOLVA::NIC_INFO::*pField;
    const char* pszName;
};
constexpr TableItem TABLE_ITEMS[] = {{&TOLVA::NIC_INFO::sNicEnum, &TOLVA::NIC_INFO::sNicFriendlyName, "name"},
                                     {&TOLVA::NIC_INFO::sNicPci, &TOLVA::NIC_INFO::sNicType, "type"}};

std::string ValuePath(const std::wstring& sKey, const wchar_t* pszValue)
{
    return PathOf(sKey + L'\\' + pszValue);
}

std::string NameAndText(const wchar_t* pszValue, const velmor::string& sText)
{
    return ToUtf8(std::wstring_view(pszValue)) + ' ' + ToUtf8(sText);
}

std::string Complaint(const std::wstring& sKey, const wchar_t* pszValue)
{
    if (HasValue(sKey, pszValue))
        return ValuePath(sKey, pszValue) + " is empty or no text";
    return PathOf(sKey) + " has no " + ToUtf8(std::wstring_view(pszValue));
}

/// For a key that is looked for by what it holds.
Gap KeyNotFound(std::wstring_view parent, const wchar_t* pszValue, const velmor::string& sWanted)
{
    return {.bIncomplete = false,
            .sText = "no key below " + PathOf(parent) + " has the " + NameAndText(pszValue, sWanted),
            .values = {ValuePath(std::wstring(parent) + L"\\*", pszValue)}};
}

void CheckClassKey(const velmor::string& sGuid, const AdapterKeys& keys, std::vector<Gap>& gaps)
{
    if (keys.bClassFound)
        return;
    Gap gap = KeyNotFound(CLASS_KEYS, INSTANCE_VALUE, sGuid);
    if (!keys.sClass.empty())
    {
        gap.sText = PathOf(keys.sClass) + " has no " + NameAndText(INSTANCE_VALUE, sGuid);
        gap.values = {ValuePath(keys.sClass, INSTANCE_VALUE)};
    }
    gap.bIncomplete = true;
    gap.sText += ": nothing else is looked up";
    gaps.push_back(std::move(gap));
}

void CheckItem(const Item& item, const AdapterKeys& keys, std::vector<Gap>& gaps)
{
    Gap gap{.bIncomplete = item.bIncomplete, .sText = {}, .values = {}};
    for (const Source& source : item.sources)
    {
        const std::wstring& sKey = keys.*source.pKey;
        if (sKey.empty())
            continue; // the key itself is what is missing
        const auto text = ReadText(sKey, source.pszValue);
        if (text && !text->empty())
            return;
        gap.sText += (gap.sText.empty() ? "" : ", and ") + Complaint(sKey, source.pszValue);
        gap.values.push_back(ValuePath(sKey, source.pszValue));
        if (text)
            break; // the library takes an empty text as it is
    }
    if (gap.values.empty())
        return;
    gap.sText.append(": ").append(item.pszWithout);
    gaps.push_back(std::move(gap));
}

void CheckTableItem(const TableItem& item, const TOLVA::NIC_INFO& info, std::vector<Gap>& gaps)
{
    if (!(info.*item.pBefore).empty() && (info.*item.pField).empty())
        gaps.push_back({.bIncomplete = true,
                        .sText = std::string("the system's adapter-address table has no ") + item.pszName + " of it",
                        .values = {}});
}

void CheckDeviceInterface(const TOLVA::NIC_INFO& info, std::vector<Gap>& gaps)
{
    if (info.sNicPci.empty() || !FindKey(LAN_DEVICES, INTERFACE_DEVICE_VALUE, info.sNicPci).empty())
        return;
    Gap gap = KeyNotFound(LAN_DEVICES, INTERFACE_DEVICE_VALUE, info.sNicPci);
    gap.sText += ": its driver offers no options, and its device is not found to be enabled or disabled";
    gaps.push_back(std::move(gap));
}

} // namespace

std::vector<Gap> GapsOf(const Adapter& adapter)
{
    const AdapterKeys keys(adapter.info.sNicGuid);
    std::vector<Gap> gaps;
    CheckClassKey(adapter.info.sNicGuid, keys, gaps);
    for (const Item& item : ITEMS)
        CheckItem(item, keys, gaps);
    for (const TableItem& item : TABLE_ITEMS)
        CheckTableItem(item, adapter.info, gaps);
    CheckDeviceInterface(adapter.info, gaps);
    return gaps;
}

} // namespace zelkctl
