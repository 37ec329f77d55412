#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zelkctl
{

/// The UTF-8 text with U+FFFD for every control character, so that no name breaks a line or drives a terminal.
std::string Printable(std::string_view text);

/// Likewise of the output of a command, with its lines joined by blanks.
std::string OneLine(std::string_view text);

/// The printable text in quotation marks.
std::string Quoted(std::string_view text);

/// How many cells of a terminal a UTF-8 text takes.
std::size_t DisplayWidth(std::string_view text);

} // namespace zelkctl
