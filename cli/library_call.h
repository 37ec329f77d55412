#pragma once

#include <string>
#include <string_view>

#include "exit_code.h"
#include "trace_reader.h"

namespace zelkctl
{

/// The innermost error or warning that the library traced, or why there is none.
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

} // namespace zelkctl
