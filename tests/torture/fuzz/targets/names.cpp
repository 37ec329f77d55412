// GUIDs, hardware addresses, and the texts by which a user names an adapter.

#include <algorithm>
#include <string>

#include <state/desired/adapter_name.h>
#include <state/desired/machine_names.h>
#include <state/platform/utf8.h>
#include <state/values/guid.h>
#include <state/values/hardware_address.h>
#include <state/values/printable.h>
#include <support/values/hardware_address_text.h>

#include "fuzz.h"

namespace
{

void TryGuid(std::string_view text)
{
    const auto guid = zelk::Guid::Parse(text);
    if (!guid)
        return;
    const std::string printed = guid->ToText();
    const std::string bare = printed.substr(1, printed.size() - 2);
    fuzz::Require(zelk::Guid::Parse(printed) == guid && zelk::Guid::Parse(bare) == guid);
    fuzz::Require(zelk::EqualIgnoringCase(printed, text) || zelk::EqualIgnoringCase(bare, text));
}

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

/// The library's parser, which takes any separator, and the stricter one of state/.
void TryHardwareAddress(std::string_view text)
{
    const zelk::HardwareAddress loose = ParseLoosely(text);
    if (loose != zelk::HardwareAddress())
    {
        const std::string printed = loose.ToText();
        fuzz::Require(velmor::string(printed.c_str()) == velmor::HexPairs(loose.Bytes().data(), loose.Bytes().size()) &&
                      ParseLoosely(printed) == loose);
        fuzz::Require(zelk::HardwareAddress::Parse(printed) == loose);
    }
    const auto strict = zelk::HardwareAddress::Parse(text);
    if (!strict)
        return;
    fuzz::Require(strict->Bytes().size() >= 6 && strict->Bytes().size() <= 8);
    fuzz::Require(zelk::HardwareAddress::Parse(strict->ToText()) == strict);
    fuzz::Require(zelk::HardwareAddress::Parse(zelk::HexPairs(strict->Bytes(), ":")) == strict);
    fuzz::Require(text.find_first_of("-:") == std::string_view::npos || loose == *strict);
}

void TryAdapter(std::string_view text)
{
    const auto found = zelk::FindAdapters(fuzz::SmallMachine(), text);
    for (const char* prefix : {"name:", "index:", "mac:", "guid:"})
        for (const zelk::Adapter* adapter : zelk::FindAdapters(fuzz::SmallMachine(), prefix + std::string(text)))
            fuzz::Require(std::ranges::find(found, adapter) != found.end());
}

void TryPrintable(std::string_view text)
{
    const std::string printable = zelk::Printable(text);
    fuzz::Require(zelk::Printable(printable) == printable);
    fuzz::Require(std::ranges::none_of(printable, [](unsigned char c) { return c < 0x20 || c == 0x7F; }));
}

} // namespace

void fuzz::Try(std::string_view text)
{
    TryGuid(text);
    TryHardwareAddress(text);
    TryAdapter(text);
    TryPrintable(text);
    const std::string name(text);
    Require(!zelk::RefuseAsComputerName(name).empty() || name.find_first_of(" \n\"") == std::string::npos);
    Require(!zelk::RefuseAsConnectionName(name).empty() || name.find_first_of("\\/:*?\"<>|") == std::string::npos);
    Require(!zelk::RefuseInCommands(name).empty() || name.find_first_of("\n\"=") == std::string::npos);
}
