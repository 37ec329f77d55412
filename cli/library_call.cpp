#include "library_call.h"

#include "text.h"

namespace zelkctl
{

std::string Explanation(const TraceReader& trace)
{
    const auto problems = trace.Problems();
    if (!problems.empty())
        return Reason(problems.front().sMessage) + " (traced by " + problems.front().sOperation + ")";
    const std::string sDirectory = ToUtf8(std::wstring_view(trace.Directory()));
    if (!trace.HasDirectory())
        return "no trace was written: the directory " + sDirectory + " is missing";
    return "no reason was traced in the directory " + sDirectory;
}

OperationFailed Failure(std::string_view operation, const TraceReader& trace)
{
    return OperationFailed(std::string(operation) + " failed: " + Explanation(trace));
}

} // namespace zelkctl
