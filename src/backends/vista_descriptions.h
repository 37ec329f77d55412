#pragma once

#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

// What the trace says of an address's enumerations, in the operation that reads it.

void DescribeScope(const CallFrame& frame, const SCOPE_ID& ScopeId);
void DescribeDadState(const CallFrame& frame, NL_DAD_STATE enDadState);
void DescribePrefixOrigin(const CallFrame& frame, NL_PREFIX_ORIGIN origin);
void DescribeSuffixOrigin(const CallFrame& frame, NL_SUFFIX_ORIGIN origin);
