#include <state/values/registry_data.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <iterator>

namespace zelk
{
namespace
{

std::u16string Units(std::span<const std::byte> data)
{
    std::u16string units(data.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(std::to_integer<unsigned int>(data[2 * i]) |
                                         std::to_integer<unsigned int>(data[2 * i + 1]) << 8);
    return units;
}

} // namespace

std::u16string DecodeText(std::span<const std::byte> data)
{
    std::u16string text = Units(data);
    text.resize(std::min(text.find(u'\0'), text.size()));
    return text;
}

std::vector<std::u16string> DecodeTexts(std::span<const std::byte> data)
{
    const std::u16string units = Units(data);
    std::vector<std::u16string> texts;
    for (std::size_t start = 0; start < units.size() && units[start] != u'\0';)
    {
        const std::size_t end = std::min(units.find(u'\0', start), units.size());
        texts.push_back(units.substr(start, end - start));
        start = end + 1;
    }
    return texts;
}

std::optional<std::uint32_t> DecodeNumber(std::span<const std::byte> data) noexcept
{
    if (data.size() != sizeof(std::uint32_t))
        return std::nullopt;
    std::uint32_t number = 0;
    for (std::size_t i = data.size(); i > 0; --i)
        number = number << 8 | std::to_integer<std::uint32_t>(data[i - 1]);
    return number;
}

std::vector<std::string_view> SplitList(std::string_view text)
{
    constexpr std::string_view SEPARATORS = ", ;\t";
    std::vector<std::string_view> parts;
    while (true)
    {
        text.remove_prefix(std::min(text.find_first_not_of(SEPARATORS), text.size()));
        if (text.empty())
            return parts;
        const std::size_t end = std::min(text.find_first_of(SEPARATORS), text.size());
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
}

std::optional<std::string> IsoDate(std::string_view text)
{
    unsigned int parts[3] = {};
    for (std::size_t i = 0; i < std::size(parts); ++i)
    {
        const char* const end = text.data() + text.size();
        const auto [next, error] = std::from_chars(text.data(), end, parts[i]);
        const bool last = i + 1 == std::size(parts);
        if (error != std::errc() || (last ? next != end : next == end || (*next != '-' && *next != '/')))
            return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(next - text.data()) + (last ? 0 : 1));
    }
    const auto [month, day, year] = parts;
    if (month > 12 || day > 31 || year < 1980 || year > 9999)
        return std::nullopt;
    const std::chrono::year_month_day calendar(std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                                               std::chrono::day(day));
    if (!calendar.ok())
        return std::nullopt;
    char date[16];
    std::snprintf(date, sizeof(date), "%04u-%02u-%02u", year, month, day);
    return date;
}

} // namespace zelk
