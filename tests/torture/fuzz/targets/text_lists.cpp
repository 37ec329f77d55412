// Data of the registry: a text, a list of texts, a number, and lists in one text.

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include <state/values/registry_data.h>
#include <support/values/text_list.h>

#include "fuzz.h"

namespace
{

std::span<const std::byte> DataOf(std::u16string_view units)
{
    return std::as_bytes(std::span(units)); // this machine has the registry's byte order
}

std::u16string UnitsOf(std::span<const std::byte> data)
{
    std::u16string units(data.size() / 2, u'\0');
    std::copy_n(data.begin(), units.size() * 2, std::as_writable_bytes(std::span(units)).begin());
    return units;
}

void TryTexts(std::span<const std::byte> data)
{
    const auto texts = zelk::DecodeTexts(data);
    std::u16string written;
    for (const std::u16string& text : texts)
        written.append(text).append(1, u'\0');
    fuzz::Require(zelk::DecodeTexts(DataOf(written)) == texts);
    written += u'\0';
    fuzz::Require(zelk::DecodeTexts(DataOf(written)) == texts);
    fuzz::Require(zelk::DecodeText(data) == (texts.empty() ? std::u16string() : texts.front()));

    // The library keeps empty texts among others; up to the first of them both give the same.
    const std::u16string units = UnitsOf(data);
    const auto all = velmor::SplitTexts(std::wstring(units.begin(), units.end()));
    fuzz::Require(all.size() >= texts.size() && (all.size() == texts.size() || all[texts.size()].empty()));
    for (std::size_t i = 0; i < texts.size(); ++i)
        fuzz::Require(all[i] == velmor::string(std::wstring(texts[i].begin(), texts[i].end())));
    fuzz::Require(all.empty() || !all.back().empty());
}

void TryParts(std::string_view text)
{
    const auto parts = zelk::SplitList(text);
    std::string joined;
    for (const std::string_view part : parts)
    {
        fuzz::Require(!part.empty() && part.find_first_of(", ;\t") == std::string_view::npos);
        joined.append(part).append(1, ',');
    }
    fuzz::Require(zelk::SplitList(joined) == parts);
}

} // namespace

void fuzz::Try(std::string_view text)
{
    const auto data = std::as_bytes(std::span(text));
    TryTexts(data);
    TryParts(text);
    Require(zelk::DecodeNumber(data).has_value() == (data.size() == 4));
}
