#include "answer/failure.h"

#include <utility>

#include "answer/cell_text.h"

namespace zelkctl
{
namespace
{

std::string Message(const Failure::Details& details)
{
    if (details.sOperation.empty())
        return details.sReason;
    const std::string sAdapter = details.sAdapter.empty() ? "" : " for adapter " + Quoted(details.sAdapter);
    return details.sOperation + " failed" + sAdapter + ": " + details.sReason;
}

} // namespace

Failure::Failure(Details details) : std::runtime_error(Message(details)), m_details(std::move(details)) {}

Failure::Failure(const zelk::ErrorReport& report, std::string sHint)
    : Failure({.code = report.code,
               .sReason = report.reason,
               .sOperation = report.operation,
               .sAdapter = report.adapter,
               .sHint = std::move(sHint)})
{
}

Failure UsageError(const std::string& sArgument, const std::string& sReason)
{
    return Failure({.code = EXIT_USAGE,
                    .sReason = sArgument + ": " + sReason,
                    .sHint = "Add --help to the command to see how it is used."});
}

} // namespace zelkctl
