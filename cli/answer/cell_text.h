#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <state/values/printable.h>

namespace zelkctl
{

using zelk::Printable;

/// The output of a command, likewise printable, with its lines joined by blanks.
std::string OneLine(std::string_view text);

/// The printable text in quotation marks.
std::string Quoted(std::string_view text);

/// How many cells of a terminal a UTF-8 text takes.
std::size_t DisplayWidth(std::string_view text);

} // namespace zelkctl
