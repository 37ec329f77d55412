#include "system/number.h"

#include <charconv>

namespace zelkctl
{

std::optional<unsigned long> ParseNumber(std::string_view digits, int base)
{
    unsigned long ulValue = 0;
    const char* const pEnd = digits.data() + digits.size();
    const auto [pParsed, error] = std::from_chars(digits.data(), pEnd, ulValue, base);
    if (error != std::errc() || pParsed != pEnd)
        return std::nullopt;
    return ulValue;
}

} // namespace zelkctl
