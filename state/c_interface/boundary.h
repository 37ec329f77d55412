#pragma once

#include <state/answers/exit_code.h>
#include <state/fields/json.h>

namespace zelk
{

/// What an operation gives to a program.
struct Answer
{
    ExitCode code = EXIT_DONE;
    Json value;
};

/// Gives an answer as a text that its receiver frees. A null `result` is not set.
/// @throws std::bad_alloc
int GiveAnswer(const Answer& answer, char** result);

/// Gives the report of the exception that is being handled. A null `error` is not set.
int GiveCurrentError(char** error) noexcept;

/// Frees what the two gave.
void FreeText(char* text) noexcept;

/// The boundary of the C interface: whatever an operation throws becomes a report.
template <class Operation>
int Give(char** result, char** error, const Operation& operation) noexcept
{
    if (result != nullptr)
        *result = nullptr;
    if (error != nullptr)
        *error = nullptr;
    try
    {
        return GiveAnswer(operation(), result);
    }
    catch (...)
    {
        return GiveCurrentError(error);
    }
}

} // namespace zelk
