#include "system/failure.h"

#include <utility>

namespace zelkctl
{
namespace
{

std::string Message(const Failure::Details& details)
{
    if (details.sOperation.empty())
        return details.sReason;
    const std::string sAdapter = details.sAdapter.empty() ? "" : " for adapter " + details.sAdapter;
    return details.sOperation + " failed" + sAdapter + ": " + details.sReason;
}

} // namespace

Failure::Failure(Details details) : std::runtime_error(Message(details)), m_details(std::move(details)) {}

Failure WrongUse(const std::string& sArgument, const std::string& sReason)
{
    return Failure({.code = EXIT_USAGE, .sReason = sArgument + ": " + sReason, .sHint = "--help tells how to use it."});
}

} // namespace zelkctl
