#include <support/values/text_list.h>

#include <algorithm>

namespace velmor
{

std::vector<string> SplitTexts(std::wstring_view list)
{
    list = list.substr(0, list.find_last_not_of(L'\0') + 1); // npos + 1 is 0
    std::vector<string> texts;
    while (!list.empty())
    {
        const std::size_t length = std::min(list.find(L'\0'), list.size());
        texts.emplace_back(list.data(), length);
        list.remove_prefix(std::min(length + 1, list.size()));
    }
    return texts;
}

} // namespace velmor
