// Hardware addresses: the library's parser, which takes any separator, and the stricter one of state/.

#include <algorithm>
#include <string>

#include <state/values/hardware_address.h>
#include <support/values/hardware_address_text.h>

#include "fuzz.h"

namespace
{

/// An empty one where the text is none.
zelk::HardwareAddress ParseLoosely(std::string_view text)
{
    const std::wstring wide(text.begin(), text.end());
    unsigned char bytes[8] = {};
    unsigned int count = 0;
    if (velmor::ParseHardwareAddress(std::wstring_view(wide), bytes, count) != nullptr)
        return {};
    fuzz::Require(count >= 6 && count <= std::size(bytes));
    return zelk::HardwareAddress(std::span(bytes).first(count));
}

} // namespace

void fuzz::Try(std::string_view text)
{
    const zelk::HardwareAddress loose = ParseLoosely(text);
    if (loose != zelk::HardwareAddress())
    {
        const std::string printed = loose.ToText();
        Require(velmor::string(printed.c_str()) == velmor::HexPairs(loose.Bytes().data(), loose.Bytes().size()) &&
                ParseLoosely(printed) == loose);
        Require(zelk::HardwareAddress::Parse(printed) == loose);
    }
    const auto strict = zelk::HardwareAddress::Parse(text);
    if (!strict)
        return;
    Require(strict->Bytes().size() >= 6 && strict->Bytes().size() <= 8);
    Require(zelk::HardwareAddress::Parse(strict->ToText()) == strict);
    Require(zelk::HardwareAddress::Parse(zelk::HexPairs(strict->Bytes(), ":")) == strict);
    Require(text.find_first_of("-:") == std::string_view::npos || loose == *strict);
}
