#include "parser/suggestion.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "answer/cell_text.h"

namespace zelkctl
{
namespace
{

std::string LowerCase(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return text;
}

/// How many letters have to be added, removed or replaced to make one text the other.
std::size_t Distance(const std::string& sOne, const std::string& sOther)
{
    std::vector<std::size_t> row(sOther.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t(0));
    for (const char cOne : sOne)
    {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < sOther.size(); ++j)
        {
            const std::size_t replaced = diagonal + (cOne != sOther[j] ? 1 : 0);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string ClosestTo(const std::string& sWord, const std::vector<std::string>& candidates)
{
    const std::string sWanted = LowerCase(sWord);
    std::string sClosest;
    std::size_t closest = 1 + sWanted.size() / 3; // more changes than that make another word of it
    for (const std::string& sCandidate : candidates)
    {
        const std::string sKnown = LowerCase(sCandidate);
        const std::size_t distance = sKnown.starts_with(sWanted) ? 1 : Distance(sWanted, sKnown);
        if (distance > closest || (distance == closest && !sClosest.empty()))
            continue;
        closest = distance;
        sClosest = sCandidate;
    }
    return sWanted.empty() ? "" : sClosest;
}

std::string ObjectionTo(const std::string& sWord, const char* pszKind, const std::vector<std::string>& values)
{
    if (std::ranges::find(values, sWord) != values.end())
        return "";
    const std::string sClosest = ClosestTo(sWord, values);
    return Quoted(sWord) + " is not a " + pszKind +
           (sClosest.empty() ? ": choose from " + Enumeration(values) : "; did you mean " + Quoted(sClosest) + '?');
}

std::string Enumeration(const std::vector<std::string>& words)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i)
        text.append(i == 0 ? "" : i + 1 < words.size() ? ", " : " and ").append(words[i]);
    return text;
}

} // namespace zelkctl
