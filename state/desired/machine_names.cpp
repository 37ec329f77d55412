#include <state/desired/machine_names.h>

#include <algorithm>
#include <string_view>

namespace zelk
{
namespace
{

bool IsLabelCharacter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

bool IsLabel(std::string_view text) noexcept
{
    constexpr std::size_t LONGEST = 63;
    return !text.empty() && text.size() <= LONGEST && text.front() != '-' && text.back() != '-' &&
           std::ranges::all_of(text, IsLabelCharacter);
}

/// The text is not empty.
bool IsNumber(std::string_view text) noexcept
{
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool HasControlCharacter(std::string_view text) noexcept
{
    return std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; });
}

} // namespace

std::string RefuseAsComputerName(const std::string& name)
{
    if (IsLabel(name) && !IsNumber(name))
        return {};
    return "must be 1 to 63 letters, digits and hyphens, neither a number nor with a hyphen at an end";
}

std::string RefuseAsDnsSuffix(const std::string& name)
{
    constexpr std::size_t LONGEST = 255;
    std::string_view rest = name;
    bool good = name.size() <= LONGEST;
    while (good && !rest.empty())
    {
        const std::size_t dot = std::min(rest.find('.'), rest.size());
        good = IsLabel(rest.substr(0, dot)) && dot + 1 != rest.size();
        rest.remove_prefix(std::min(dot + 1, rest.size()));
    }
    return good ? "" : "must be a DNS domain, such as \"example.org\", or empty";
}

std::string RefuseAsWorkgroup(const std::string& name)
{
    constexpr std::size_t LONGEST = 15;
    const bool good = !name.empty() && name.size() <= LONGEST && !HasControlCharacter(name) &&
                      name.find_first_of("\"/\\[]:|<>+=;,?*") == std::string::npos && name.front() != ' ';
    return good ? ""
                : "must be 1 to 15 characters, must not begin with a space, and must not contain control characters or "
                  "\" / \\ [ ] : | < > + = ; , ? *";
}

std::string RefuseAsConnectionName(const std::string& name)
{
    constexpr std::size_t LONGEST = 255;
    const bool good = !name.empty() && name.size() <= LONGEST && !HasControlCharacter(name) &&
                      name.find_first_of("\\/:*?\"<>|") == std::string::npos &&
                      name.find_first_not_of(' ') != std::string::npos;
    if (!good)
        return "must be 1 to 255 characters, not all of them spaces, and must not contain control characters or \\ / : "
               "* ? \" < > |";
    return RefuseInCommands(name);
}

std::string RefuseInCommands(const std::string& name)
{
    if (name.empty())
        return "the connection has no name that the system's commands could be told";
    if (name.find_first_of("\"=") != std::string::npos || HasControlCharacter(name))
        return "the name \"" + name + "\" cannot be passed to the system's commands safely; rename the connection";
    if (IsNumber(name))
        return "the system's commands would take the name \"" + name + "\" for an index; rename the connection";
    return {};
}

std::string RefuseInInterpreter(const std::string& name)
{
    if (name.find_first_of("\"%") == std::string::npos && !HasControlCharacter(name))
        return {};
    return "the name \"" + name + "\" cannot be passed to the command interpreter safely; rename the connection";
}

} // namespace zelk
