#include "adapters/adapter.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include <iphlpapi.h>

#include "adapters/installed_adapters.h"
#include "adapters/library_call.h"
#include "answer/table.h"
#include "system/failure.h"
#include "system/number.h"
#include "system/text.h"
#include "trace/trace_reader.h"

namespace zelkctl
{
namespace
{

/// The library answers "failed" also for a machine without a single adapter.
bool IsNoAdapterEnabled()
{
    ULONG ulSize = 0;
    return ::GetInterfaceInfo(nullptr, &ulSize) == ERROR_NO_DATA;
}

std::vector<TOLVA::NIC_INFO> ListRecords()
{
    std::vector<TOLVA::NIC_INFO> records;
    const TraceReader trace;
    if (!TOLVA::GetAdapterList(records) && !IsNoAdapterEnabled())
        throw OperationFailed("GetAdapterList", nullptr, trace);
    return records;
}

Adapter Identify(const TOLVA::NIC_INFO& info)
{
    Adapter adapter{info, std::nullopt, {}};
    unsigned long ulIndex = 0;
    if (TOLVA::GetAdapterIndex(info, ulIndex))
        adapter.index = ulIndex;
    if (!TOLVA::GetAdapterIpconfigName(info, adapter.sIpconfigName))
        adapter.sIpconfigName = L"";
    return adapter;
}

// Whether the adapter has what the user wrote as its identity of one kind.

bool HasName(const Adapter& adapter, std::string_view wanted)
{
    const velmor::string sWanted = FromUtf8(wanted);
    return !sWanted.empty() && (EqualIgnoringCase(adapter.info.sNicFriendlyName, sWanted) ||
                                EqualIgnoringCase(adapter.sIpconfigName, sWanted));
}

bool HasGuid(const Adapter& adapter, std::string_view wanted)
{
    const velmor::string sWanted = FromUtf8(wanted);
    const velmor::string& sGuid = adapter.info.sNicGuid;
    return EqualIgnoringCase(sGuid, sWanted) || EqualIgnoringCase(sGuid, velmor::string(L"{") + sWanted + L"}");
}

bool HasIndex(const Adapter& adapter, std::string_view wanted)
{
    if (wanted.starts_with('#'))
        wanted.remove_prefix(1);
    const auto index = ParseNumber(wanted);
    return index && adapter.index == index;
}

/// The digits of a hardware address in upper case; empty for any other text.
std::string HexDigits(std::string_view text)
{
    constexpr std::size_t FEWEST_DIGITS = 12;
    std::string digits;
    for (const char character : text)
    {
        if (std::isxdigit(static_cast<unsigned char>(character)) != 0)
            digits += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
        else if (character != '-' && character != ':')
            return {};
    }
    return digits.size() >= FEWEST_DIGITS ? digits : std::string();
}

bool HasMac(const Adapter& adapter, std::string_view wanted)
{
    const std::string sDigits = HexDigits(wanted);
    return !sDigits.empty() && sDigits == HexDigits(ToUtf8(HardwareAddressOf(adapter.info)));
}

struct Identity
{
    std::string_view prefix;
    bool (*pHas)(const Adapter&, std::string_view);
};
constexpr Identity IDENTITIES[] = {{"name:", HasName}, {"guid:", HasGuid}, {"index:", HasIndex}, {"mac:", HasMac}};

bool IsWanted(const Adapter& adapter, std::string_view wanted)
{
    for (const Identity& identity : IDENTITIES)
        if (EqualIgnoringCase(FromUtf8(wanted.substr(0, identity.prefix.size())), FromUtf8(identity.prefix)))
            return identity.pHas(adapter, wanted.substr(identity.prefix.size()));
    return std::ranges::any_of(IDENTITIES, [&](const Identity& identity) { return identity.pHas(adapter, wanted); });
}

std::vector<Adapter> Candidates(std::vector<Adapter> adapters, std::string_view wanted)
{
    std::erase_if(adapters, [&](const Adapter& adapter) { return !IsWanted(adapter, wanted); });
    return adapters;
}

std::string Enumerate(const std::vector<Adapter>& adapters)
{
    Table table;
    for (const Adapter& adapter : adapters)
        table.Add({adapter.index ? std::to_string(*adapter.index) : "-", Printable(ToUtf8(adapter.info.sNicGuid)),
                   Printable(ToUtf8(adapter.Name()))});
    std::string text = table.Text();
    text.pop_back(); // the line's end comes with the message
    return text;
}

} // namespace

std::string CalledName(const Adapter& adapter)
{
    const velmor::string& sName = adapter.Name();
    return ToUtf8(sName.empty() ? adapter.info.sNicGuid : sName);
}

std::string Quoted(const Adapter& adapter)
{
    return Quoted(CalledName(adapter));
}

std::vector<Adapter> ListAdapters()
{
    std::vector<Adapter> adapters;
    for (const TOLVA::NIC_INFO& info : ListRecords())
        adapters.push_back(Identify(info));
    return adapters;
}

velmor::string HardwareAddressOf(const TOLVA::NIC_INFO& info)
{
    // The record has it only when everything else about the device was found out too; the adapter itself can be asked
    // always.
    TOLVA::HARDWARE_ADDRESS address;
    if (!info.sNicHwAddr.empty() || !TOLVA::GetHardwareAddress(info, address))
        return info.sNicHwAddr;
    return address;
}

Adapter FindAdapter(const std::string& sWanted, Among among)
{
    auto candidates = Candidates(ListAdapters(), sWanted);
    if (candidates.empty() && among == Among::INSTALLED)
        candidates = Candidates(ListInstalledAdapters(), sWanted);
    const std::string sQuoted = Quoted(sWanted);
    if (candidates.empty())
        throw Failure({.code = EXIT_NO_SUCH_ADAPTER,
                       .sReason = "there is no adapter " + sQuoted,
                       .sHint = "\"zelkctl adapter list\" shows all that are enabled."});
    if (candidates.size() > 1)
        throw Failure({.code = EXIT_NO_SUCH_ADAPTER,
                       .sReason = sQuoted + " stands for several adapters:\n" + Enumerate(candidates),
                       .sHint = "Say which by \"guid:{...}\", \"index:N\", \"mac:XX-...\" or \"name:...\"."});
    return candidates.front();
}

} // namespace zelkctl
