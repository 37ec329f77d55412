#include "parser/help_format.h"

#include <algorithm>
#include <sstream>

namespace zelkctl
{

std::string Wrapped(const std::string& sText, std::size_t columns)
{
    std::string wrapped;
    std::istringstream lines(sText);
    for (std::string sLine; std::getline(lines, sLine); wrapped += sLine + '\n')
    {
        const std::size_t indent = std::min(sLine.find_first_not_of(' '), sLine.size());
        while (sLine.size() > columns)
        {
            const std::size_t blank = sLine.rfind(' ', columns);
            if (blank == std::string::npos || blank <= indent)
                break;
            wrapped += sLine.substr(0, blank) + '\n';
            sLine.erase(indent, blank + 1 - indent);
        }
    }
    if (!wrapped.empty() && !sText.ends_with('\n'))
        wrapped.pop_back();
    return wrapped;
}

std::string HelpFormatter::make_description(const CLI::App* pCommand) const
{
    return Wrapped(Formatter::make_description(pCommand), COLUMNS);
}

std::string HelpFormatter::make_subcommand(const CLI::App* pCommand) const
{
    std::ostringstream text;
    CLI::detail::format_help(text, pCommand->get_display_name(true),
                             Wrapped(pCommand->get_description(), COLUMNS - column_width_), column_width_);
    return text.str();
}

std::string HelpFormatter::make_option_desc(const CLI::Option* pOption) const
{
    return Wrapped(Formatter::make_option_desc(pOption), COLUMNS - column_width_);
}

std::string HelpFormatter::make_footer(const CLI::App* pCommand) const
{
    return Wrapped(Formatter::make_footer(pCommand), COLUMNS);
}

} // namespace zelkctl
