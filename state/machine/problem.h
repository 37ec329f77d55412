#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace zelk
{

/// Something that could not be read, and why. What it would have told is absent from the value.
struct Problem
{
    std::uint32_t code = 0;    ///< Windows error code; 13 (ERROR_INVALID_DATA) for what was read and makes no sense
    std::string step;          ///< the platform's function, or the registry value or key, such as "GetIpForwardTable2"
    std::string text;          ///< what is missing now, in one sentence
    std::string systemMessage; ///< the system's own text for the code, in its language; empty where it has none

    bool operator==(const Problem&) const = default;
};

/// The one exception of this library beside those of the standard library: nothing at all could be done. what() is the
/// problem's text.
class StateError : public std::runtime_error
{
public:
    explicit StateError(Problem problem);

    [[nodiscard]] const Problem& GetProblem() const noexcept { return m_problem; }

private:
    Problem m_problem;
};

} // namespace zelk
