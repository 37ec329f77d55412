#pragma once

#include <cstddef>
#include <string>

#include <CLI/CLI.hpp>

namespace zelkctl
{

/// The text with its long lines broken at blanks.
std::string Wrapped(const std::string& sText, std::size_t columns);

/// Help that fits into the 80 columns of a boot image's console.
class HelpFormatter : public CLI::Formatter
{
public:
    static constexpr std::size_t COLUMNS = 79; ///< a line that fills the last one would wrap

    std::string make_description(const CLI::App* pCommand) const override;
    std::string make_subcommand(const CLI::App* pCommand) const override;
    std::string make_option_desc(const CLI::Option* pOption) const override;
    std::string make_footer(const CLI::App* pCommand) const override;
};

} // namespace zelkctl
