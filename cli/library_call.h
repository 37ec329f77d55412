#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "exit_code.h"
#include "trace_reader.h"

namespace zelkctl
{

/// The innermost cause of the last failure or warning that the library traced, or why there is none.
std::string Explanation(const TraceReader& trace);

/// The operation's name and why it failed, as far as the library traced it.
OperationFailed Failure(std::string_view operation, const TraceReader& trace);

/// Runs an operation of the library that answers true or false; a failure becomes an OperationFailed.
template <class Operation>
void Call(std::string_view name, Operation&& operation)
{
    const TraceReader trace;
    if (!operation())
        throw Failure(name, trace);
}

/// What people read of an operation that changes something.
struct ChangeTexts
{
    std::string sDoing; ///< while it runs, such as "Renewing the lease"
    std::string sDone;  ///< after it
};

/// Like Call, for an operation that can take its time: shows that it runs, that it is done, and what the library
/// traced as gone wrong without failing for it.
void Change(std::string_view name, const ChangeTexts& texts, const std::function<bool()>& operation);

} // namespace zelkctl
