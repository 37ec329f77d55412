#pragma once

#include <stdexcept>

namespace zelkctl
{

/// What the tool tells the shell that started it.
enum ExitCode : int
{
    EXIT_DONE = 0,
    EXIT_OPERATION_FAILED = 1,
    EXIT_USAGE = 2,
    EXIT_NO_SUCH_ADAPTER = 3
};

/// An operation of the library answered that it failed. The message names the operation and the reason.
class OperationFailed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The adapter that was asked for does not exist, or its name stands for several.
class NoSuchAdapter : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace zelkctl
