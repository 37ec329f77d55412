#include <state/machine/persistent_route.h>

#include <algorithm>
#include <charconv>

namespace zelk
{
namespace
{

std::string_view TakePart(std::string_view& text) noexcept
{
    const std::size_t end = std::min(text.find(','), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::optional<std::uint32_t> ParseMetric(std::string_view text) noexcept
{
    std::uint32_t metric = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), metric);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return metric;
}

} // namespace

std::optional<Route> ParsePersistentRoute(std::string_view text)
{
    const auto destination = IpAddress::Parse(TakePart(text));
    const auto mask = IpAddress::Parse(TakePart(text));
    const auto nextHop = IpAddress::Parse(TakePart(text));
    const auto length = mask ? PrefixLengthOfMask(*mask) : std::nullopt;
    const auto metric = ParseMetric(text);
    if (!destination || !destination->IsIpv4() || !length || !nextHop || !nextHop->IsIpv4() || !metric)
        return std::nullopt;
    Route route;
    route.destination = {*destination, *length};
    route.nextHop = *nextHop;
    route.metric = metric;
    route.store = RouteStore::PERSISTENT;
    return route;
}

} // namespace zelk
