#include <state/fields/json_value.h>

#include <cstdio>

namespace zelk
{
namespace
{

constexpr const char* GUID_PATTERN = "^\\{[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\}$";
constexpr const char* PREFIX_PATTERN = "^[0-9A-Fa-f:.]+/[0-9]{1,3}$";
constexpr const char* HARDWARE_ADDRESS_PATTERN = "^([0-9A-F]{2}(-[0-9A-F]{2})*)?$";

Json TextOfPattern(const char* pattern)
{
    return {{"type", "string"}, {"pattern", pattern}};
}

} // namespace

std::string TimeText(std::chrono::sys_seconds time)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    char text[40];
    std::snprintf(text, sizeof(text), "%04d-%02u-%02uT%02ld:%02ld:%02ldZ", static_cast<int>(date.year()),
                  static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                  static_cast<long>(clock.hours().count()), static_cast<long>(clock.minutes().count()),
                  static_cast<long>(clock.seconds().count()));
    return text;
}

Json ReferenceTo(const char* definition)
{
    return {{"$ref", std::string("#/$defs/") + definition}};
}

Json SchemaOfType(const char* type, const char* format)
{
    Json schema = {{"type", type}};
    if (format != nullptr)
        schema["format"] = format;
    return schema;
}

Json OrNull(Json schema)
{
    Json null = SchemaOfType("null");
    return {{"anyOf", Json::array({std::move(schema), std::move(null)})}};
}

template <>
Json SchemaOfText<IpAddress>()
{
    return {{"anyOf", Json::array({SchemaOfType("string", "ipv4"), SchemaOfType("string", "ipv6")})}};
}

template <>
Json SchemaOfText<IpPrefix>()
{
    return TextOfPattern(PREFIX_PATTERN);
}

template <>
Json SchemaOfText<HardwareAddress>()
{
    return TextOfPattern(HARDWARE_ADDRESS_PATTERN);
}

template <>
Json SchemaOfText<Guid>()
{
    return TextOfPattern(GUID_PATTERN);
}

} // namespace zelk
