#pragma once

namespace zelkctl
{

/// What the tool tells the shell that started it.
enum ExitCode : int
{
    EXIT_DONE = 0,
    EXIT_OPERATION_FAILED = 1,
    EXIT_USAGE = 2,
    EXIT_NO_SUCH_ADAPTER = 3,
    EXIT_NEEDS_ELEVATION = 4,
    EXIT_TIME_OVER = 5,
    EXIT_NOT_VERIFIED = 6,
    EXIT_BUSY = 7, ///< another change is under way, or waits to be confirmed
    EXIT_NOT_POSSIBLE = 8,
    EXIT_DIFFERENCES = 10
};

} // namespace zelkctl
