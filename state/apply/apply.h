#pragma once

#include <chrono>
#include <functional>

#include <state/apply/result.h>

namespace zelk
{

/// What is being done while the caller waits.
struct Progress
{
    enum class Phase
    {
        PERFORMING,
        VERIFYING,
        UNDOING
    };

    Phase phase = Phase::PERFORMING;
    const Step* step = nullptr;        ///< null while verifying
    const StepResult* ended = nullptr; ///< how the step has ended; null when it begins
    std::size_t number = 0;            ///< of the step, from 1
    std::size_t count = 0;             ///< of all steps
};

struct ApplyOptions
{
    /// For each command, for a device to start, and for everything to be as wanted at the end.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    /// How often to look whether everything is as wanted where no notification of the platform says so earlier.
    std::chrono::milliseconds lookInterval = std::chrono::milliseconds(200);
    bool keep = false; ///< a failed change is not undone
    std::function<void(const Progress&)> progress;
    /// Called before each operation of TOLVA, on the thread that calls it. What it gives is called when the operation
    /// has failed, and tells why: the trace of the library says.
    std::function<std::function<std::string()>()> watchLibrary;
    std::function<bool()> isCancelled; ///< asked several times a second, on the caller's thread
};

/// Takes the machine to what a plan wants: performs its steps, then reads the machine until what is in use and what is
/// configured is as wanted. When a step fails or the caller cancels, what the steps so far have touched is taken back
/// to what was configured in `before`, unless it is to be kept. Undoing is not cancelled. An empty plan needs no
/// elevation and starts nothing.
/// @param before  the machine for which the plan was made
/// @throws StateError when the machine can no longer be read.
ApplyResult Apply(const Machine& before, const Plan& plan, const ApplyOptions& options);

} // namespace zelk
