#include "failure.h"

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

} // namespace zelkctl
