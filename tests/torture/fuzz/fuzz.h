#pragma once

#include <source_location>
#include <string_view>

namespace fuzz
{

/// Gives one text to a parser and checks what has to hold for every text. Each target defines it.
void Try(std::string_view text);

/// Ends the program, and with it the search, where something does not hold.
void Require(bool holds, std::source_location where = std::source_location::current());

/// The text up to the separator, which is taken off with it; the rest where there is none.
std::string_view TakeUntil(std::string_view& text, char separator);

} // namespace fuzz
