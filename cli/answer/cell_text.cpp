#include "answer/cell_text.h"

#include <algorithm>
#include <iterator>

#include "system/utf8.h"

namespace zelkctl
{
namespace
{

/// Code points that do not take one cell. The second of two surrogates takes none, so that a pair takes what its first
/// one does; pairs that stand for two cells begin with the units listed.
struct WidthRange
{
    wchar_t first, last;
    std::size_t width;
};
constexpr WidthRange WIDTHS[] = {
    {0x0300, 0x036F, 0}, // combining marks
    {0x1100, 0x115F, 2}, // Hangul letters
    {0x200B, 0x200F, 0}, // zero-width marks
    {0x2E80, 0xA4CF, 2}, // Chinese and Japanese scripts, Yi
    {0xAC00, 0xD7A3, 2}, // Hangul syllables
    {0xD83C, 0xD83E, 2}, // pictographs
    {0xD840, 0xD8BF, 2}, // rarer ideographs
    {0xDC00, 0xDFFF, 0}, // second surrogates
    {0xF900, 0xFAFF, 2}, // compatibility ideographs
    {0xFE00, 0xFE0F, 0}, // variation selectors
    {0xFE30, 0xFE6F, 2}, // vertical and small forms
    {0xFF00, 0xFF60, 2}, // full-width forms
    {0xFFE0, 0xFFE6, 2}, // full-width signs
};

std::size_t WidthOf(wchar_t unit)
{
    const auto range = std::ranges::find_if(
        WIDTHS, [=](const WidthRange& known) { return unit >= known.first && unit <= known.last; });
    return range != std::end(WIDTHS) ? range->width : 1;
}

} // namespace

std::string OneLine(std::string_view text)
{
    std::string joined;
    for (std::size_t end = 0; !text.empty(); text.remove_prefix(std::min(end + 1, text.size())))
    {
        end = std::min(text.find_first_of("\r\n"), text.size());
        if (end > 0)
            joined.append(joined.empty() ? "" : " ").append(text.substr(0, end));
    }
    return Printable(joined);
}

std::string Quoted(std::string_view text)
{
    return '"' + Printable(text) + '"';
}

std::size_t DisplayWidth(std::string_view text)
{
    std::size_t width = 0;
    for (const wchar_t unit : FromUtf8(text))
        width += WidthOf(unit);
    return width;
}

} // namespace zelkctl
