#pragma once

#include <stdexcept>
#include <string>

#include <state/answers/error_report.h>

#include "answer/exit_code.h"

namespace zelkctl
{

/// Why a command did not do what was asked of it. The message is for people and does not contain the hint.
class Failure : public std::runtime_error
{
public:
    /// What is not known is empty.
    struct Details
    {
        ExitCode code = EXIT_OPERATION_FAILED;
        std::string sReason = {};
        std::string sOperation = {}; ///< of the library
        std::string sAdapter = {};   ///< its name
        std::string sHint = {};      ///< what can be done about it, a sentence
    };

    explicit Failure(Details details);
    /// Likewise, with what the user of the tool can do about it.
    explicit Failure(const zelk::ErrorReport& report, std::string sHint = {});

    [[nodiscard]] const Details& What() const noexcept { return m_details; }

private:
    Details m_details;
};

/// The user gave something for an argument that cannot be used.
Failure UsageError(const std::string& sArgument, const std::string& sReason);

} // namespace zelkctl
