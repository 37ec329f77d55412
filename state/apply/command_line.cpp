#include <state/apply/command_line.h>

namespace zelk
{
namespace
{

/// Backslashes stand for themselves, but doubled before a quotation mark.
std::wstring Quote(const std::wstring& argument)
{
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos)
        return argument;
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument)
    {
        if (c == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

} // namespace

std::wstring MakeCommandLine(const std::wstring& program, const std::vector<std::wstring>& arguments)
{
    std::wstring line = L'"' + program + L'"';
    for (const std::wstring& argument : arguments)
        line += L' ' + Quote(argument);
    return line;
}

} // namespace zelk
