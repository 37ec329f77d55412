#pragma once

#include <string>
#include <string_view>

#include <state/machine/machine.h>

#include "answer/failure.h"
#include "trace/trace_reader.h"

namespace zelkctl
{

/// The innermost cause of the last failure or warning that the library traced, or why there is none.
std::string Explanation(const TraceReader& trace);

/// The library's operation failed: why, as far as it was traced, and a hint where one is known. `pAdapter` is the
/// adapter that it was about, if any; `bNeedsIpv6` says that it was about IPv6 too.
Failure OperationFailed(std::string_view operation, const zelk::Adapter* pAdapter, const TraceReader& trace,
                        bool bNeedsIpv6 = false);

/// Runs an operation of the library that answers true or false; false becomes a Failure.
template <class Operation>
void Call(std::string_view name, const zelk::Adapter* pAdapter, Operation&& operation)
{
    const TraceReader trace;
    if (!operation())
        throw OperationFailed(name, pAdapter, trace);
}

} // namespace zelkctl
