#include "trace/trace_line.h"

#include "system/number.h"
#include "system/system_error.h"

namespace zelkctl
{
namespace
{

/// Takes everything before the first `separator` off the text, and the separator with it.
std::optional<std::string_view> TakeUntil(std::string_view& text, std::string_view separator)
{
    const std::size_t position = text.find(separator);
    if (position == std::string_view::npos)
        return std::nullopt;
    const std::string_view taken = text.substr(0, position);
    text.remove_prefix(position + separator.size());
    return taken;
}

std::optional<char> ParseLevel(std::string_view tag)
{
    if (tag.size() != 2 || tag[0] != '[' || std::string_view("EWIV").find(tag[1]) == std::string_view::npos)
        return std::nullopt;
    return tag[1];
}

std::string_view Trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Position of the parenthesis that closes one opened before the text; npos when none does.
std::size_t FindClosing(std::string_view text)
{
    int depth = 1;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '(')
            ++depth;
        else if (text[i] == ')' && --depth == 0)
            return i;
    }
    return std::string_view::npos;
}

/// What the message says without the frame that ends an operation.
std::string BareReason(std::string_view message)
{
    constexpr std::string_view ENDING = "... ending(";
    constexpr std::string_view ENDING_WITH = "... ending : ";
    if (message.starts_with(ENDING_WITH))
        return "ended with " + std::string(Trim(message.substr(ENDING_WITH.size())));
    if (!message.starts_with(ENDING))
        return std::string(Trim(message));
    const std::string_view rest = message.substr(ENDING.size());
    const std::size_t closing = FindClosing(rest);
    if (closing == std::string_view::npos)
        return std::string(Trim(rest));
    const std::string sReason(Trim(rest.substr(0, closing)));
    return std::string(Trim(sReason + std::string(rest.substr(closing + 1))));
}

/// A reason that ends with one of the system's codes gets the system's text for it.
std::string WithSystemText(const std::string& sReason)
{
    for (const std::string_view mark : {" : dwLastError = ", " : dwRc = ", " : ulRc = "})
    {
        const std::size_t position = sReason.rfind(mark);
        if (position == std::string::npos)
            continue;
        const auto code = ParseNumber(std::string_view(sReason).substr(position + mark.size()));
        return code ? sReason.substr(0, position) + ": " + SystemText(*code) : sReason;
    }
    return sReason;
}

} // namespace

std::string_view TakeLine(std::string_view& text)
{
    const std::size_t length = text.find('\n');
    std::string_view line = text.substr(0, length);
    text.remove_prefix(length != std::string_view::npos ? length + 1 : text.size());
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

std::optional<TraceLine> ParseTraceLine(std::string_view line)
{
    if (!line.starts_with('['))
        return std::nullopt;
    const auto time = TakeUntil(line, "]:");
    const auto thread = TakeUntil(line, ":");
    const auto tag = TakeUntil(line, "]: ");
    if (!time || !thread || !tag)
        return std::nullopt;
    const auto ulThread = ParseNumber(*thread, 16);
    const auto level = ParseLevel(*tag);
    if (!ulThread || !level)
        return std::nullopt;

    const std::string_view operation = TakeUntil(line, " : ").value_or(std::string_view());
    return TraceLine{std::string(time->substr(1)), *ulThread, *level, std::string(operation),
                     std::string(Trim(line)),      {}};
}

std::string Reason(std::string_view message)
{
    return WithSystemText(BareReason(message));
}

} // namespace zelkctl
