#include "adapters/adapter.h"

#include <algorithm>
#include <string_view>

#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "answer/table.h"
#include "system/number.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

// Whether the adapter has what the user wrote as its identity of one kind.
bool HasName(const zelk::Adapter& adapter, std::string_view wanted)
{
    return std::ranges::any_of(
        std::initializer_list<const std::optional<std::string>*>{&adapter.connectionName, &adapter.friendlyName},
        [&](const auto* pName) { return *pName && !wanted.empty() && EqualIgnoringCase(**pName, wanted); });
}

bool HasGuid(const zelk::Adapter& adapter, std::string_view wanted)
{
    const auto guid = zelk::Guid::Parse(wanted);
    return guid && adapter.guid == guid;
}

bool HasIndex(const zelk::Adapter& adapter, std::string_view wanted)
{
    if (wanted.starts_with('#'))
        wanted.remove_prefix(1);
    const auto index = ParseNumber(wanted);
    return index && adapter.index == index;
}

bool HasMac(const zelk::Adapter& adapter, std::string_view wanted)
{
    const auto address = zelk::HardwareAddress::Parse(wanted);
    return address && adapter.hardwareAddress == address;
}

struct Identity
{
    std::string_view prefix;
    bool (*pHas)(const zelk::Adapter&, std::string_view);
};
constexpr Identity IDENTITIES[] = {{"name:", HasName}, {"guid:", HasGuid}, {"index:", HasIndex}, {"mac:", HasMac}};

bool IsWanted(const zelk::Adapter& adapter, std::string_view wanted)
{
    for (const Identity& identity : IDENTITIES)
        if (EqualIgnoringCase(wanted.substr(0, identity.prefix.size()), identity.prefix))
            return identity.pHas(adapter, wanted.substr(identity.prefix.size()));
    return std::ranges::any_of(IDENTITIES, [&](const Identity& identity) { return identity.pHas(adapter, wanted); });
}

std::vector<const zelk::Adapter*> Candidates(const zelk::Machine& machine, std::string_view wanted)
{
    std::vector<const zelk::Adapter*> candidates;
    for (const zelk::Adapter& adapter : machine.adapters)
        if (IsWanted(adapter, wanted))
            candidates.push_back(&adapter);
    if (candidates.size() > 1)
        std::erase_if(candidates, [](const zelk::Adapter* pAdapter) { return pAdapter->hidden; });
    return candidates;
}

/// A line for each, by which they can be told apart.
std::string Enumerate(const std::vector<const zelk::Adapter*>& adapters)
{
    Table table;
    for (const zelk::Adapter* pAdapter : adapters)
        table.Add({{pAdapter->index ? std::to_string(*pAdapter->index) : "-"},
                   {pAdapter->guid ? pAdapter->guid->ToText() : "-"},
                   {Printable(zelk::NameOf(*pAdapter))}});
    std::string text = table.Text();
    text.pop_back(); // the line's end comes with the message
    return text;
}

template <class Value>
velmor::string TextOrEmpty(const std::optional<Value>& value)
{
    if (!value)
        return {};
    if constexpr (std::is_same_v<Value, std::string>)
        return FromUtf8(*value);
    else
        return FromUtf8(value->ToText());
}

} // namespace

std::string Quoted(const zelk::Adapter& adapter)
{
    return Quoted(zelk::NameOf(adapter));
}

const zelk::Adapter& FindAdapter(const zelk::Machine& machine, const std::string& sWanted)
{
    const auto candidates = Candidates(machine, sWanted);
    const std::string sQuoted = Quoted(sWanted);
    if (candidates.empty())
        throw Failure({.code = EXIT_NO_SUCH_ADAPTER,
                       .sReason = "there is no adapter " + sQuoted,
                       .sHint = "Run \"zelkctl adapter list --all\" to see all adapters."});
    if (candidates.size() > 1)
        throw Failure({.code = EXIT_NO_SUCH_ADAPTER,
                       .sReason = sQuoted + " matches several adapters:\n" + Enumerate(candidates),
                       .sHint = "Choose one with \"guid:{...}\", \"index:N\", \"mac:XX-...\" or \"name:...\"."});
    return *candidates.front();
}

const zelk::Adapter* SameAdapter(const zelk::Machine& machine, const zelk::Adapter& adapter)
{
    const auto found = std::ranges::find(machine.adapters, adapter.guid, &zelk::Adapter::guid);
    return found != machine.adapters.end() ? &*found : nullptr;
}

TOLVA::NIC_INFO NicInfoOf(const zelk::Adapter& adapter)
{
    TOLVA::NIC_INFO info;
    info.sNicDesc = TextOrEmpty(adapter.description);
    info.sNicFriendlyName = TextOrEmpty(adapter.friendlyName);
    info.sNicEnum = TextOrEmpty(adapter.classKey);
    info.sNicGuid = TextOrEmpty(adapter.guid);
    info.sNicName = TextOrEmpty(zelk::DeviceNameOf(adapter));
    info.sNicPci = TextOrEmpty(adapter.deviceInstance);
    info.sNicHwAddr = TextOrEmpty(adapter.hardwareAddress);
    return info;
}

std::vector<std::string> AdapterNames()
{
    std::vector<std::string> names;
    for (const zelk::Adapter& adapter : zelk::ReadMachine({.identity = false, .routes = false}).adapters)
        if (!adapter.hidden)
            names.push_back(zelk::NameOf(adapter));
    std::ranges::sort(names);
    names.erase(std::ranges::unique(names).begin(), names.end());
    return names;
}

} // namespace zelkctl
