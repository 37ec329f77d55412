#pragma once

#include <zelk_state/zelk_state.h>

namespace zelk
{

/// How an operation has ended, for whoever called it or started the tool: the codes of the C interface.
enum ExitCode : int
{
    EXIT_DONE = ZELK_STATE_DONE,
    EXIT_OPERATION_FAILED = ZELK_STATE_FAILED,
    EXIT_USAGE = ZELK_STATE_USAGE,
    EXIT_NO_SUCH_ADAPTER = ZELK_STATE_NO_SUCH_ADAPTER,
    EXIT_NEEDS_ELEVATION = ZELK_STATE_NEEDS_ELEVATION,
    EXIT_TIME_OVER = ZELK_STATE_TIME_OVER,
    EXIT_NOT_VERIFIED = ZELK_STATE_NOT_VERIFIED,
    EXIT_BUSY = ZELK_STATE_BUSY,
    EXIT_NOT_POSSIBLE = ZELK_STATE_NOT_POSSIBLE,
    EXIT_DIFFERENCES = ZELK_STATE_DIFFERENCES
};

} // namespace zelk
