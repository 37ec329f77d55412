#include "adapters/library_call.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "adapters/adapter.h"
#include "answer/cell_text.h"
#include "system/elevation.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

/// What can be done about the failure of an operation on this adapter; empty when nothing is known.
std::string HintAbout(const zelk::Adapter& adapter, bool bNeedsIpv6)
{
    if (adapter.status == zelk::AdapterStatus::DISABLED)
        return "The adapter is disabled. To enable it, run: zelkctl adapter enable " + Argument(zelk::NameOf(adapter));
    if (!adapter.index)
        return "The adapter is not running; \"zelkctl adapter list --all\" shows the status of all adapters.";
    return bNeedsIpv6 && adapter.ipv6.enabled == false ? "IPv6 is disabled for this adapter." : "";
}

std::string HintFor(const zelk::Adapter* pAdapter, const TraceReader& trace, bool bNeedsIpv6)
{
    if (!trace.HasDirectory())
        return "Create the directory " + ToUtf8(trace.Directory()) +
               "; the library writes there why an operation fails.";
    if (trace.Problems().empty())
        return "\"zelkctl trace level\" shows how much is traced; the reasons for failures are traced from level 1 on.";
    std::string sHint = pAdapter != nullptr ? HintAbout(*pAdapter, bNeedsIpv6) : "";
    if (!sHint.empty() || IsElevated())
        return sHint;
    return "Many operations require elevation; run zelkctl from an elevated prompt.";
}

/// What an operation survived is followed by a line of its own: the cause of its end stands after the last such line.
/// A bare "Failed" at the end only sums up.
const TraceLine& LastCause(const std::vector<TraceLine>& problems)
{
    const TraceLine& last = problems.back();
    const bool bSummary = problems.size() > 1 && Reason(last.sMessage) == "Failed";
    const auto survived = std::find_if(problems.rbegin() + (bSummary ? 2 : 1), problems.rend(),
                                       [&](const TraceLine& line) { return line.sOperation == last.sOperation; });
    return *survived.base();
}

} // namespace

std::string Explanation(const TraceReader& trace)
{
    const auto problems = trace.Problems();
    if (!problems.empty())
    {
        const TraceLine& cause = LastCause(problems);
        const std::string& sOutput = cause.sCommandOutput;
        return Reason(cause.sMessage) + " (traced by " + cause.sOperation + ')' +
               (sOutput.empty() ? "" : "; the command printed: " + Printable(sOutput));
    }
    const std::string sDirectory = ToUtf8(trace.Directory());
    if (!trace.HasDirectory())
        return "the reason is not known because the directory " + sDirectory + " for the trace is missing";
    return "the library traced no reason in the directory " + sDirectory;
}

Failure OperationFailed(std::string_view operation, const zelk::Adapter* pAdapter, const TraceReader& trace,
                        bool bNeedsIpv6)
{
    return Failure({.sReason = Explanation(trace),
                    .sOperation = std::string(operation),
                    .sAdapter = pAdapter != nullptr ? zelk::NameOf(*pAdapter) : "",
                    .sHint = HintFor(pAdapter, trace, bNeedsIpv6)});
}

} // namespace zelkctl
