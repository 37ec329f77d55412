#pragma once

#include <stdexcept>
#include <string>

#include "system/exit_code.h"

namespace zelkctl
{

/// Why a command ends without having done what was asked of it. The message is for people, without the hint.
class Failure : public std::runtime_error
{
public:
    /// What is not known is empty.
    struct Details
    {
        ExitCode code = EXIT_OPERATION_FAILED;
        std::string sReason = {};
        std::string sOperation = {}; ///< of the library
        std::string sAdapter = {};   ///< as messages call it, in quotation marks
        std::string sHint = {};      ///< what can be done about it, a sentence
    };

    explicit Failure(Details details);

    [[nodiscard]] const Details& What() const noexcept { return m_details; }

private:
    Details m_details;
};

/// What the user gave for an argument is not to be used.
Failure WrongUse(const std::string& sArgument, const std::string& sReason);

} // namespace zelkctl
