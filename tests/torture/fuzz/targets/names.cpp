// GUIDs, and the texts by which a user names an adapter.

#include <algorithm>

#include <state/desired/adapter_name.h>
#include <state/desired/machine_names.h>
#include <state/platform/utf8.h>
#include <state/values/guid.h>
#include <state/values/printable.h>

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
    TryAdapter(text);
    TryPrintable(text);
    const std::string name(text);
    Require(!zelk::RefuseAsComputerName(name).empty() || name.find_first_of(" \n\"") == std::string::npos);
    Require(!zelk::RefuseAsConnectionName(name).empty() || name.find_first_of("\\/:*?\"<>|") == std::string::npos);
    Require(!zelk::RefuseInCommands(name).empty() || name.find_first_of("\n\"=") == std::string::npos);
}
