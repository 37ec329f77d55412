#pragma once

#include <support/trace/call_frame.h>

/// Systems refuse a route whose metric is below their interface's with ERROR_BAD_ARGUMENTS (documented of
/// CreateIpForwardEntry from Vista on) and do not say what they would take. So the metric is raised by one and the
/// creation tried again for as long as that is the answer; there is no bound, by contract. `dwRc` is the first
/// attempt's code, the result the last one's.
template <class Metric, class Create>
DWORD RaiseMetricWhileRefused(const CallFrame& frame, const char* pszVariable, Metric& metric, DWORD dwRc,
                              Create&& create)
{
    while (dwRc == ERROR_BAD_ARGUMENTS)
    {
        frame.Verbose(pszVariable, metric);
        ++metric;
        dwRc = create();
    }
    return dwRc;
}
