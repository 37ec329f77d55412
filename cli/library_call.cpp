#include "library_call.h"

#include <algorithm>
#include <vector>

#include "output.h"
#include "text.h"
#include "waiting.h"

namespace zelkctl
{
namespace
{

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

OperationFailed Failure(std::string_view operation, const TraceReader& trace)
{
    return OperationFailed(std::string(operation) + " failed: " + Explanation(trace));
}

void Change(std::string_view name, const ChangeTexts& texts, const std::function<bool()>& operation)
{
    const TraceReader trace;
    Call(name, [&] {
        const Waiting waiting(texts.sDoing);
        return operation();
    });
    Output::Note(texts.sDone);
    if (!trace.Problems().empty())
        Output::Note("The library went on after this: " + Explanation(trace));
}

} // namespace zelkctl
