#include <state/values/ip_address.h>

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace zelk
{
namespace
{

constexpr std::size_t GROUPS = 8;
using Groups = std::array<std::uint16_t, GROUPS>;

/// The number that the whole text is, at most `largest`; nothing for an empty one or one of more than `digits` digits.
std::optional<unsigned int> ParseNumber(std::string_view text, int base, std::size_t digits,
                                        unsigned int largest) noexcept
{
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    if (!whole || text.size() > digits || number > largest)
        return std::nullopt;
    return number;
}

/// Takes the text up to the separator, and the separator, off the front; the rest where there is no separator.
std::string_view TakePart(std::string_view& text, char separator) noexcept
{
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::optional<IpAddress::Ipv4Bytes> ParseIpv4(std::string_view text) noexcept
{
    if (std::ranges::count(text, '.') != 3)
        return std::nullopt;
    IpAddress::Ipv4Bytes bytes;
    for (std::uint8_t& byte : bytes)
    {
        const std::string_view part = TakePart(text, '.');
        const auto number = ParseNumber(part, 10, 3, 255);
        if (!number || (part.size() > 1 && part[0] == '0')) // octal to some
            return std::nullopt;
        byte = static_cast<std::uint8_t>(*number);
    }
    return bytes;
}

/// A list of groups parted by single colons, the last of which may be dotted when it ends the address. Gives how many
/// groups it is, or nothing.
std::optional<std::size_t> ParseGroups(std::string_view text, bool endsAddress, Groups& groups) noexcept
{
    std::size_t count = 0;
    if (text.ends_with(':'))
        return std::nullopt;
    while (!text.empty())
    {
        const std::string_view part = TakePart(text, ':');
        if (part.find('.') != std::string_view::npos)
        {
            const auto bytes = ParseIpv4(part);
            if (!bytes || !endsAddress || !text.empty() || count + 2 > GROUPS)
                return std::nullopt;
            groups[count++] = static_cast<std::uint16_t>((*bytes)[0] << 8 | (*bytes)[1]);
            groups[count++] = static_cast<std::uint16_t>((*bytes)[2] << 8 | (*bytes)[3]);
            continue;
        }
        const auto number = ParseNumber(part, 16, 4, 0xFFFF);
        if (!number || count == GROUPS)
            return std::nullopt;
        groups[count++] = static_cast<std::uint16_t>(*number);
    }
    return count;
}

/// Puts the groups behind "::" at the end, zeros between, and checks that all is there.
bool JoinGroups(std::string_view text, Groups& groups) noexcept
{
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos)
        return ParseGroups(text, true, groups) == GROUPS;
    Groups tail = {};
    const auto before = ParseGroups(text.substr(0, gap), false, groups);
    const auto after = ParseGroups(text.substr(gap + 2), true, tail);
    if (!before || !after || *before + *after >= GROUPS)
        return false;
    std::copy_n(tail.begin(), *after, groups.end() - static_cast<std::ptrdiff_t>(*after));
    return true;
}

std::optional<IpAddress::Ipv6Bytes> ParseIpv6(std::string_view text) noexcept
{
    Groups groups = {};
    if (!JoinGroups(text, groups))
        return std::nullopt;
    IpAddress::Ipv6Bytes bytes;
    for (std::size_t i = 0; i < GROUPS; ++i)
    {
        bytes[2 * i] = static_cast<std::uint8_t>(groups[i] >> 8);
        bytes[2 * i + 1] = static_cast<std::uint8_t>(groups[i]);
    }
    return bytes;
}

std::string Ipv4Text(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += (text.empty() ? "" : ".") + std::to_string(byte);
    return text;
}

std::string HexText(unsigned int number)
{
    char text[8];
    return {text, std::to_chars(std::begin(text), std::end(text), number, 16).ptr};
}

/// The longest run of zero groups, the first of several, if it is longer than one.
std::pair<std::size_t, std::size_t> LongestZeroRun(const Groups& groups, std::size_t count) noexcept
{
    std::size_t first = count;
    std::size_t length = 1;
    for (std::size_t i = 0; i < count; ++i)
    {
        std::size_t end = i;
        while (end < count && groups[end] == 0)
            ++end;
        if (end - i > length)
        {
            first = i;
            length = end - i;
        }
    }
    return {first, length};
}

std::string Ipv6Text(std::span<const std::uint8_t> bytes)
{
    Groups groups;
    for (std::size_t i = 0; i < GROUPS; ++i)
        groups[i] = static_cast<std::uint16_t>(bytes[2 * i] << 8 | bytes[2 * i + 1]);
    const bool mapped =
        groups[5] == 0xFFFF && std::all_of(groups.begin(), groups.begin() + 5, [](auto group) { return group == 0; });
    const std::size_t count = mapped ? GROUPS - 2 : GROUPS;
    const auto [gap, length] = LongestZeroRun(groups, count);

    std::string text;
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i == gap)
        {
            text += "::";
            i += length - 1;
            continue;
        }
        if (!text.empty() && !text.ends_with(':'))
            text += ':';
        text += HexText(groups[i]);
    }
    return mapped ? text + ':' + Ipv4Text(bytes.last(4)) : text;
}

} // namespace

IpAddress::IpAddress(const Ipv4Bytes& bytes) noexcept
{
    std::ranges::copy(bytes, m_bytes.begin());
}

IpAddress::IpAddress(const Ipv6Bytes& bytes) noexcept : m_family(Family::IPV6), m_bytes(bytes) {}

IpAddress IpAddress::Unspecified(Family family) noexcept
{
    return family == Family::IPV4 ? IpAddress() : IpAddress(Ipv6Bytes{});
}

std::optional<IpAddress> IpAddress::Parse(std::string_view text) noexcept
{
    if (text.find(':') == std::string_view::npos)
    {
        const auto bytes = ParseIpv4(text);
        return bytes ? std::optional(IpAddress(*bytes)) : std::nullopt;
    }
    const auto bytes = ParseIpv6(text);
    return bytes ? std::optional(IpAddress(*bytes)) : std::nullopt;
}

std::span<const std::uint8_t> IpAddress::Bytes() const noexcept
{
    return std::span(m_bytes).first(IsIpv4() ? 4 : 16);
}

bool IpAddress::IsUnspecified() const noexcept
{
    return *this == Unspecified(m_family);
}

bool IpAddress::IsLoopback() const noexcept
{
    if (IsIpv4())
        return m_bytes[0] == 127;
    Ipv6Bytes loopback = {};
    loopback.back() = 1;
    return m_bytes == loopback;
}

bool IpAddress::IsMulticast() const noexcept
{
    return IsIpv4() ? (m_bytes[0] & 0xF0) == 0xE0 : m_bytes[0] == 0xFF;
}

bool IpAddress::IsLinkLocal() const noexcept
{
    return IsIpv4() ? m_bytes[0] == 169 && m_bytes[1] == 254 : m_bytes[0] == 0xFE && (m_bytes[1] & 0xC0) == 0x80;
}

std::string IpAddress::ToText() const
{
    return IsIpv4() ? Ipv4Text(Bytes()) : Ipv6Text(Bytes());
}

} // namespace zelk
