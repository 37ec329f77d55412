#include <state/values/printable.h>

namespace zelk
{
namespace
{

constexpr std::string_view REPLACEMENT_UTF8 = "\xEF\xBF\xBD";

/// The C1 controls are U+0080 to U+009F: C2 and a byte of that range.
bool IsC1Control(std::string_view text)
{
    return text.size() > 1 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

bool IsC0Control(char byte)
{
    return static_cast<unsigned char>(byte) < 0x20 || byte == '\x7F';
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty())
    {
        const bool c1 = IsC1Control(text);
        if (c1 || IsC0Control(text[0]))
            result += REPLACEMENT_UTF8;
        else
            result += text[0];
        text.remove_prefix(c1 ? 2 : 1);
    }
    return result;
}

} // namespace zelk
