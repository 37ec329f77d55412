#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelkctl
{

/// One line of the library's trace file.
struct TraceLine
{
    std::string sTime; ///< local time; the texts compare like the times
    unsigned long ulThread;
    char level; ///< 'E', 'W', 'I' or 'V'
    std::string sOperation;
    std::string sMessage;
    std::string sCommandOutput; ///< of a problem: what the failed command before it wrote

    [[nodiscard]] bool IsProblem() const noexcept { return level == 'E' || level == 'W'; }
};

/// Takes the first line off the text, without its end.
std::string_view TakeLine(std::string_view& text);

/// Nothing for a line of another form, such as a further row of a byte dump.
std::optional<TraceLine> ParseTraceLine(std::string_view line);

/// What a message says without the frame that ends an operation: "... ending( Bad NIC GUID )" says "Bad NIC GUID",
/// and "... ending : iRc = 1" says "ended with iRc = 1". A code of the system at its end becomes the system's text.
std::string Reason(std::string_view message);

} // namespace zelkctl
