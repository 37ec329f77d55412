#include <state/values/guid.h>

#include <charconv>

#include <state/values/hardware_address.h>

namespace zelk
{
namespace
{

constexpr std::string_view FORM = "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX";

} // namespace

std::optional<Guid> Guid::Parse(std::string_view text) noexcept
{
    if (text.size() == FORM.size() + 2 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, FORM.size());
    if (text.size() != FORM.size())
        return std::nullopt;
    Guid guid;
    std::size_t place = 0;
    for (std::uint8_t& byte : guid.m_bytes)
    {
        if (FORM[place] == '-' && text[place++] != '-')
            return std::nullopt;
        const char* const end = text.data() + place + 2;
        if (std::from_chars(text.data() + place, end, byte, 16).ptr != end)
            return std::nullopt;
        place += 2;
    }
    return guid;
}

std::string Guid::ToText() const
{
    const std::string digits = HexPairs(m_bytes, "");
    std::string text = "{";
    std::size_t next = 0;
    for (const char character : FORM)
        text += character == '-' ? '-' : digits[next++];
    return text + '}';
}

} // namespace zelk

std::size_t std::hash<zelk::Guid>::operator()(const zelk::Guid& guid) const noexcept
{
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(guid.m_bytes.data()), guid.m_bytes.size()});
}
