#include <state/values/hardware_address.h>

#include <charconv>
#include <cstddef>

namespace zelk
{
namespace
{

constexpr std::size_t FEWEST_BYTES = 6;
constexpr std::size_t MOST_BYTES = 8;

std::optional<std::uint8_t> ParsePair(std::string_view text) noexcept
{
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), byte, 16);
    if (text.size() != 2 || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return byte;
}

} // namespace

std::optional<HardwareAddress> HardwareAddress::Parse(std::string_view text)
{
    const char separator = text.size() > 2 ? text[2] : '\0';
    const bool joined = separator == '-' || separator == ':';
    HardwareAddress address;
    while (!text.empty())
    {
        const auto byte = ParsePair(text.substr(0, 2));
        if (!byte || address.m_bytes.size() == MOST_BYTES)
            return std::nullopt;
        address.m_bytes.push_back(*byte);
        text.remove_prefix(2);
        if (!joined || text.empty())
            continue;
        if (text[0] != separator || text.size() == 1)
            return std::nullopt;
        text.remove_prefix(1);
    }
    return address.m_bytes.size() >= FEWEST_BYTES ? std::optional(address) : std::nullopt;
}

std::string HardwareAddress::ToText() const
{
    return HexPairs(m_bytes, "-");
}

std::string HexPairs(std::span<const std::uint8_t> bytes, std::string_view separator)
{
    constexpr std::string_view DIGITS = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes)
    {
        if (!text.empty())
            text += separator;
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 0x0F];
    }
    return text;
}

} // namespace zelk
