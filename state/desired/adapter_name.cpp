#include <state/desired/adapter_name.h>

#include <algorithm>
#include <charconv>

#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

bool HasName(const Adapter& adapter, std::string_view wanted)
{
    const auto is = [&](const std::optional<std::string>& name) { return name && EqualIgnoringCase(*name, wanted); };
    return !wanted.empty() && (is(adapter.connectionName) || is(adapter.friendlyName));
}

bool HasIndex(const Adapter& adapter, std::string_view wanted)
{
    if (wanted.starts_with('#'))
        wanted.remove_prefix(1);
    std::uint32_t index = 0;
    const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), index);
    return !wanted.empty() && error == std::errc() && end == wanted.data() + wanted.size() && adapter.index == index;
}

bool HasHardwareAddress(const Adapter& adapter, std::string_view wanted)
{
    const auto address = HardwareAddress::Parse(wanted);
    return address && adapter.hardwareAddress == address;
}

bool HasGuid(const Adapter& adapter, std::string_view wanted)
{
    const auto guid = Guid::Parse(wanted);
    return guid && adapter.guid == guid;
}

constexpr struct
{
    std::string_view prefix;
    bool (*has)(const Adapter&, std::string_view);
} IDENTITIES[] = {{"name:", HasName}, {"index:", HasIndex}, {"mac:", HasHardwareAddress}, {"guid:", HasGuid}};

bool IsNamed(const Adapter& adapter, std::string_view text)
{
    for (const auto& identity : IDENTITIES)
        if (EqualIgnoringCase(text.substr(0, identity.prefix.size()), identity.prefix))
            return identity.has(adapter, text.substr(identity.prefix.size()));
    return std::ranges::any_of(IDENTITIES, [&](const auto& identity) { return identity.has(adapter, text); });
}

} // namespace

std::vector<const Adapter*> FindAdapters(const Machine& machine, std::string_view text)
{
    std::vector<const Adapter*> found;
    for (const Adapter& adapter : machine.adapters)
        if (IsNamed(adapter, text))
            found.push_back(&adapter);
    if (found.size() > 1)
        std::erase_if(found, [](const Adapter* adapter) { return adapter->hidden; });
    return found;
}

} // namespace zelk
