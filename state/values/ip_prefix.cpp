#include <state/values/ip_prefix.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>

namespace zelk
{
namespace
{

/// Of byte `index` of an address the bits that a prefix of `length` bits covers.
std::uint8_t MaskByte(std::size_t index, std::size_t length) noexcept
{
    const std::size_t bits = std::clamp<std::size_t>(length, index * 8, index * 8 + 8) - index * 8;
    return static_cast<std::uint8_t>(0xFF00U >> bits);
}

template <std::size_t Size>
IpAddress Masked(std::span<const std::uint8_t> bytes, std::size_t length) noexcept
{
    std::array<std::uint8_t, Size> masked;
    for (std::size_t i = 0; i < Size; ++i)
        masked[i] = bytes[i] & MaskByte(i, length);
    return IpAddress(masked);
}

} // namespace

std::optional<IpPrefix> IpPrefix::Parse(std::string_view text) noexcept
{
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos)
        return std::nullopt;
    const auto address = IpAddress::Parse(text.substr(0, slash));
    const std::string_view digits = text.substr(slash + 1);
    std::uint8_t length = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
    const bool whole =
        error == std::errc() && end == digits.data() + digits.size() && (digits == "0" || digits[0] != '0');
    if (!address || !whole || length > BitsOf(address->GetFamily()))
        return std::nullopt;
    return IpPrefix{*address, length};
}

IpPrefix IpPrefix::Network() const noexcept
{
    return {address.IsIpv4() ? Masked<4>(address.Bytes(), length) : Masked<16>(address.Bytes(), length), length};
}

bool IpPrefix::Contains(const IpAddress& other) const noexcept
{
    return other.GetFamily() == address.GetFamily() && IpPrefix{other, length}.Network() == Network();
}

std::string IpPrefix::ToText() const
{
    return address.ToText() + '/' + std::to_string(length);
}

IpAddress MaskOf(std::uint8_t length) noexcept
{
    constexpr IpAddress::Ipv4Bytes ALL_ONES = {255, 255, 255, 255};
    return IpPrefix{IpAddress(ALL_ONES), length}.Network().address;
}

std::optional<std::uint8_t> PrefixLengthOfMask(const IpAddress& mask) noexcept
{
    if (!mask.IsIpv4())
        return std::nullopt;
    std::uint32_t bits = 0;
    for (const std::uint8_t byte : mask.Bytes())
        bits = bits << 8 | byte;
    const int length = std::countl_one(bits);
    if (length + std::countr_zero(bits) < 32)
        return std::nullopt;
    return static_cast<std::uint8_t>(length);
}

} // namespace zelk
