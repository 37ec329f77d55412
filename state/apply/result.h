#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <state/machine/machine.h>
#include <state/plan/plan.h>

namespace zelk
{

enum class StepOutcome : std::uint8_t
{
    DONE,
    FAILED,
    TIMED_OUT, ///< its command did not end in time and was ended
    CANCELLED,
    NOT_RUN ///< an earlier one has failed
};

struct StepResult
{
    Step step;
    StepOutcome outcome = StepOutcome::NOT_RUN;
    std::chrono::milliseconds duration = {};
    std::optional<std::uint32_t> exitCode; ///< of a command
    std::uint32_t error = 0;               ///< Windows error code, where one is known
    std::string reason;                    ///< why it has failed, a sentence
    std::string output;                    ///< what the command wrote
};

/// What was done to get back to the previous state.
struct Undo
{
    std::vector<StepResult> steps;
    std::vector<Difference> open; ///< what is still not as before; empty when all was undone
};

enum class Outcome : std::uint8_t
{
    UNCHANGED,      ///< there was nothing to do
    CHANGED,        ///< done, and verified
    NOT_VERIFIED,   ///< done, but in the time given not everything was as wanted
    FAILED,         ///< a step failed
    TIMED_OUT,      ///< a command did not end in time
    CANCELLED,      ///< on demand
    NEEDS_ELEVATION ///< nothing was tried
};

struct ApplyResult
{
    Outcome outcome = Outcome::UNCHANGED;
    bool changed = false; ///< whether the machine is another than before
    std::vector<StepResult> steps;
    std::vector<Difference> open; ///< what is not as wanted now
    std::optional<Undo> undo;
    Machine now;
};

const char* WordOf(StepOutcome outcome) noexcept;
const char* WordOf(Outcome outcome) noexcept;
Json ToJson(const StepResult& result);
Json ToJson(const Undo& undo);
/// With the differences of the plan, and the adapters that it is about as they stand now.
Json ToJson(const ApplyResult& result, const Plan& plan);

} // namespace zelk
