#pragma once

#include <stdexcept>
#include <string>

#include <state/answers/exit_code.h>
#include <state/fields/json.h>

namespace zelk
{

/// Why something was not done. What is not known is empty.
struct ErrorReport
{
    ExitCode code = EXIT_OPERATION_FAILED;
    std::string reason = {};
    std::string operation = {}; ///< of the library
    std::string adapter = {};   ///< its name
    std::string hint = {};      ///< what can be done about it, a sentence
};

Json ToJson(const ErrorReport& report);

/// An operation that ends with a report instead of an answer.
class ReportedError : public std::runtime_error
{
public:
    explicit ReportedError(ErrorReport report);

    [[nodiscard]] const ErrorReport& Report() const noexcept { return m_report; }

private:
    ErrorReport m_report;
};

} // namespace zelk
