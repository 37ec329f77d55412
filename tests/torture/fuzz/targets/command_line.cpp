// A command line that is made of arguments gives these arguments again, by the rules of the C run time.

#include <string>
#include <vector>

#include <state/apply/command_line.h>

#include "fuzz.h"

namespace
{

/// Takes one argument off the line: 2n backslashes before a quotation mark are n of them and 2n+1 are n and the mark
/// itself; other marks open and close a part in which blanks stand for themselves, and two in such a part are one.
std::wstring TakeArgument(std::wstring_view& line)
{
    std::wstring argument;
    bool quoted = false;
    while (!line.empty() && (quoted || (line[0] != L' ' && line[0] != L'\t')))
    {
        const std::size_t backslashes = std::min(line.find_first_not_of(L'\\'), line.size());
        line.remove_prefix(backslashes);
        const bool mark = line.starts_with(L'"');
        argument.append(mark ? backslashes / 2 : backslashes, L'\\');
        if (line.empty() || (!mark && backslashes > 0))
            continue;
        const bool twice = quoted && line.starts_with(L"\"\"");
        if (!mark || backslashes % 2 != 0 || twice)
            argument += line[0];
        else
            quoted = !quoted;
        line.remove_prefix(mark && backslashes % 2 == 0 && twice ? 2 : 1);
    }
    line.remove_prefix(std::min(line.find_first_not_of(L" \t"), line.size()));
    return argument;
}

} // namespace

void fuzz::Try(std::string_view text)
{
    std::vector<std::wstring> arguments;
    while (!text.empty())
    {
        const std::string_view argument = TakeUntil(text, '\0');
        arguments.emplace_back(argument.begin(), argument.end());
    }
    const std::wstring program = L"C:\\Program Files\\a\\";
    const std::wstring made = zelk::MakeCommandLine(program, arguments);
    std::wstring_view line = made;
    Require(line.starts_with(L'"' + program + L'"')); // the rules do not hold for the program
    line.remove_prefix(program.size() + 2);
    line.remove_prefix(std::min(line.find_first_not_of(L' '), line.size()));
    for (const std::wstring& argument : arguments)
    {
        Require(!line.empty());
        Require(TakeArgument(line) == argument);
    }
    Require(line.empty());
}
