// Data of the registry: a text, a list of texts, a number, a list in one text, and a date.

#include <algorithm>
#include <ctime>
#include <span>
#include <string>
#include <vector>

#include <state/values/registry_data.h>
#include <support/values/text_list.h>

#include "fuzz.h"

namespace
{

/// The library keeps empty texts among others; up to the first of them it gives the same.
void TryLibrary(std::u16string_view units, const std::vector<std::u16string>& texts)
{
    const auto all = velmor::SplitTexts(std::wstring(units.begin(), units.end()));
    fuzz::Require(all.size() == texts.size() || (all.size() > texts.size() && all[texts.size()].empty()));
    for (std::size_t i = 0; i < texts.size(); ++i)
        fuzz::Require(std::ranges::equal(std::wstring_view(all[i].c_str(), all[i].size()), texts[i]));
    fuzz::Require(all.empty() || !all.back().empty());
}

void TryTexts(std::span<const std::byte> data)
{
    const auto texts = zelk::DecodeTexts(data);
    std::u16string written;
    for (const std::u16string& text : texts)
        written.append(text).append(1, u'\0');
    fuzz::Require(zelk::DecodeTexts(std::as_bytes(std::span(written))) == texts);
    fuzz::Require(zelk::DecodeText(data) == (texts.empty() ? std::u16string() : texts.front()));

    std::u16string units(data.size() / 2, u'\0'); // this machine has the registry's byte order
    std::ranges::copy(data.first(units.size() * 2), std::as_writable_bytes(std::span(units)).begin());
    TryLibrary(units, texts);
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

void TryDate(std::string_view text)
{
    const auto date = zelk::IsoDate(text);
    if (!date)
        return;
    std::tm day = {};
    fuzz::Require(date->size() == 10 && ::strptime(date->c_str(), "%Y-%m-%d", &day) == date->c_str() + 10);
    const std::tm given = day;
    fuzz::Require(::timegm(&day) != -1 && day.tm_mday == given.tm_mday && day.tm_mon == given.tm_mon);
    fuzz::Require(zelk::IsoDate(date->substr(5) + '-' + date->substr(0, 4)) == date);
}

} // namespace

void fuzz::Try(std::string_view text)
{
    const auto data = std::as_bytes(std::span(text));
    TryTexts(data);
    TryParts(text);
    TryDate(text);
    Require(zelk::DecodeNumber(data).has_value() == (data.size() == 4));
}
