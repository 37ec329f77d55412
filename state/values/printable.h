#pragma once

#include <string>
#include <string_view>

namespace zelk
{

/// The UTF-8 text with U+FFFD for every control character, so that no name breaks a line or drives a terminal.
std::string Printable(std::string_view text);

} // namespace zelk
