#include "answer/word.h"

#include <algorithm>

namespace zelkctl
{

std::string WordOf(std::span<const Word> words, unsigned long value)
{
    const auto found =
        std::find_if(words.begin(), words.end(), [value](const Word& word) { return word.value == value; });
    return found != words.end() ? found->pszText : "Unknown : " + std::to_string(value);
}

} // namespace zelkctl
