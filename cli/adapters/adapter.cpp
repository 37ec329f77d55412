#include "adapters/adapter.h"

#include <algorithm>

#include <state/answers/reports.h>
#include <state/desired/adapter_name.h>
#include <state/reading/read_machine.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

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

std::string Argument(const std::string& sText)
{
    return sText.find_first_of(" &()^;,") == std::string::npos ? Printable(sText) : Quoted(sText);
}

const zelk::Adapter& FindAdapter(const zelk::Machine& machine, const std::string& sWanted)
{
    const auto candidates = zelk::FindAdapters(machine, sWanted);
    if (candidates.size() != 1)
        throw Failure(zelk::ReportOfName(sWanted, candidates),
                      candidates.empty()
                          ? "Run \"zelkctl adapter list --all\" to see all adapters."
                          : "Choose one with \"guid:{...}\", \"index:N\", \"mac:XX-...\" or \"name:...\".");
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
