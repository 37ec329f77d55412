#pragma once

#include <optional>
#include <string_view>

namespace zelkctl
{

/// Null for anything that is not digits of the base alone, and for a number that does not fit.
std::optional<unsigned long> ParseNumber(std::string_view digits, int base = 10);

} // namespace zelkctl
