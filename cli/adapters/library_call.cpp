#include "adapters/library_call.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "system/elevation.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

/// What is most often behind a failure, and what can be done about it; empty when nothing is known.
std::string HintFor(const Adapter* pAdapter, const TraceReader& trace, bool bNeedsIpv6)
{
    if (!trace.HasDirectory())
        return "Make the directory " + ToUtf8(std::wstring_view(trace.Directory())) +
               ", and the library writes there why an operation fails.";
    if (trace.Problems().empty())
        return "\"zelkctl trace level\" tells how much is traced; from level 1 on it is why an operation fails.";
    unsigned long ulIndex = 0;
    if (pAdapter != nullptr && !TOLVA::GetAdapterIndex(pAdapter->info, ulIndex))
        return "The adapter is no longer there, or is disabled; \"zelkctl adapter list\" shows those that are there.";
    TOLVA::FAMILY_TYPE enFamily = TOLVA::FAMILY_BOTH;
    if (bNeedsIpv6 && pAdapter != nullptr && TOLVA::AddressFamilySupported(pAdapter->info, enFamily) &&
        enFamily == TOLVA::FAMILY_IPV4)
        return "IPv6 is off for this adapter.";
    return IsElevated() ? "" : "Without elevation much is refused; run it from an elevated prompt.";
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
               (sOutput.empty() ? "" : "; the command said: " + Printable(sOutput));
    }
    const std::string sDirectory = ToUtf8(std::wstring_view(trace.Directory()));
    if (!trace.HasDirectory())
        return "no trace was written: the directory " + sDirectory + " is missing";
    return "no reason was traced in the directory " + sDirectory;
}

Failure OperationFailed(std::string_view operation, const Adapter* pAdapter, const TraceReader& trace, bool bNeedsIpv6)
{
    // The reason first: the hint asks the library, which traces that too.
    Failure::Details details{.sReason = Explanation(trace), .sOperation = std::string(operation)};
    if (pAdapter != nullptr)
        details.sAdapter = Quoted(*pAdapter);
    details.sHint = HintFor(pAdapter, trace, bNeedsIpv6);
    return Failure(std::move(details));
}

} // namespace zelkctl
