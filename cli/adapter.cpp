#include "adapter.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "exit_code.h"
#include "library_call.h"
#include "number.h"
#include "table.h"
#include "text.h"
#include "trace_reader.h"

namespace zelkctl
{
namespace
{

constexpr std::string_view NO_ADAPTER_TRACED = "There are no network adapters enabled for IPv4 on the local system";

/// The library answers "failed" also for a machine without a single adapter; only the trace tells the two apart.
bool IsNoAdapterEnabled(const TraceReader& trace)
{
    const auto problems = trace.Problems();
    return std::any_of(problems.begin(), problems.end(), [](const TraceLine& line) {
        return line.sMessage.find(NO_ADAPTER_TRACED) != std::string::npos;
    });
}

std::vector<TOLVA::NIC_INFO> ListRecords()
{
    std::vector<TOLVA::NIC_INFO> records;
    const TraceReader trace;
    if (!TOLVA::GetAdapterList(records) && !IsNoAdapterEnabled(trace))
        throw Failure("GetAdapterList", trace);
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

bool HasGuid(const Adapter& adapter, const velmor::string& sWanted)
{
    const velmor::string& sGuid = adapter.info.sNicGuid;
    return EqualIgnoringCase(sGuid, sWanted) || EqualIgnoringCase(sGuid, velmor::string(L"{") + sWanted + L"}");
}

bool HasName(const Adapter& adapter, const velmor::string& sWanted)
{
    return !sWanted.empty() && (EqualIgnoringCase(adapter.info.sNicFriendlyName, sWanted) ||
                                EqualIgnoringCase(adapter.sIpconfigName, sWanted));
}

/// Every adapter that the first kind of identity with any match gives.
std::vector<Adapter> Candidates(const std::vector<Adapter>& adapters, const std::string& sWanted)
{
    std::vector<Adapter> found;
    const auto Collect = [&](auto&& matches) {
        if (found.empty())
            std::copy_if(adapters.begin(), adapters.end(), std::back_inserter(found), matches);
    };
    const velmor::string sWideWanted = FromUtf8(sWanted);
    Collect([&](const Adapter& adapter) { return HasGuid(adapter, sWideWanted); });
    Collect([&](const Adapter& adapter) { return HasName(adapter, sWideWanted); });
    if (const auto index = ParseNumber(sWanted))
        Collect([&](const Adapter& adapter) { return adapter.index == index; });
    return found;
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

std::string Quoted(const Adapter& adapter)
{
    const velmor::string& sName = adapter.Name();
    return Quoted(ToUtf8(sName.empty() ? adapter.info.sNicGuid : sName));
}

std::vector<Adapter> ListAdapters()
{
    std::vector<Adapter> adapters;
    for (const TOLVA::NIC_INFO& info : ListRecords())
        adapters.push_back(Identify(info));
    return adapters;
}

Adapter FindAdapter(const std::string& sWanted)
{
    const auto candidates = Candidates(ListAdapters(), sWanted);
    const std::string sQuoted = Quoted(sWanted);
    if (candidates.empty())
        throw NoSuchAdapter("there is no adapter " + sQuoted + "; \"zelkctl adapter list\" shows all");
    if (candidates.size() > 1)
        throw NoSuchAdapter(sQuoted + " stands for several adapters, name one by its GUID or index:\n" +
                            Enumerate(candidates));
    return candidates.front();
}

} // namespace zelkctl
