#include "report/conformity.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include <state/desired/object_reader.h>

namespace zelkctl
{
namespace
{

using zelk::Json;
using Misfit = std::optional<zelk::Fault>;

struct Kind
{
    const char* pszName; ///< in a schema
    const char* pszText;
    bool (*isOf)(const Json& value);
};

constexpr Kind KINDS[] = {
    {"object", "an object", [](const Json& value) { return value.is_object(); }},
    {"array", "a list", [](const Json& value) { return value.is_array(); }},
    {"string", "a text", [](const Json& value) { return value.is_string(); }},
    {"integer", "a whole number", [](const Json& value) { return value.is_number_integer(); }},
    {"boolean", "true or false", [](const Json& value) { return value.is_boolean(); }},
    {"null", "null", [](const Json& value) { return value.is_null(); }},
};

Misfit MisfitAt(const std::string& sPlace, std::string sText)
{
    return zelk::Fault{zelk::FaultKind::MEANING, sPlace, std::move(sText)};
}

Misfit FindMisfitOfKind(const Json& value, const Json& schema, const std::string& sPlace)
{
    // Words of newer versions are shown as they are.
    const std::string sKind = schema.contains("type")   ? schema["type"].get<std::string>()
                              : schema.contains("enum") ? "string"
                                                        : "";
    const auto kind = std::ranges::find(KINDS, sKind, &Kind::pszName);
    if (kind != std::end(KINDS) && !kind->isOf(value))
        return MisfitAt(sPlace, std::string("must be ") + kind->pszText);
    if (schema.contains("const") && value != schema["const"])
        return MisfitAt(sPlace, "must be " + schema["const"].dump());
    return std::nullopt;
}

/// That of the alternative which the value comes closest to: it fits until deepest inside the value.
Misfit FindMisfitOfAll(const Json& value, const Json& alternatives, const Json& definitions, const std::string& sPlace)
{
    Misfit closest;
    for (const Json& alternative : alternatives)
    {
        const Misfit misfit = FindMisfit(value, alternative, definitions, sPlace);
        if (!misfit)
            return std::nullopt;
        if (!closest || misfit->place.size() > closest->place.size())
            closest = misfit;
    }
    return closest;
}

Misfit FindMisfitInside(const Json& value, const Json& schema, const Json& definitions, const std::string& sPlace)
{
    if (value.is_array() && schema.contains("items"))
        for (std::size_t i = 0; i < value.size(); ++i)
            if (auto misfit = FindMisfit(value[i], schema["items"], definitions, zelk::PlaceOf(sPlace, i)))
                return misfit;
    if (value.is_object() && schema.contains("properties"))
        for (const auto& [sKey, member] : schema["properties"].items())
            if (const auto found = value.find(sKey); found != value.end())
                if (auto misfit =
                        FindMisfit(*found, member, definitions, zelk::PlaceOf(sPlace, std::string_view(sKey))))
                    return misfit;
    return std::nullopt;
}

} // namespace

std::optional<zelk::Fault> FindMisfit(const Json& value, const Json& schema, const Json& definitions,
                                      const std::string& sPlace)
{
    constexpr std::string_view DEFINITIONS = "#/$defs/";
    if (schema.contains("$ref"))
        return FindMisfit(value, definitions[schema["$ref"].get<std::string>().substr(DEFINITIONS.size())], definitions,
                          sPlace);
    if (schema.contains("anyOf"))
        return FindMisfitOfAll(value, schema["anyOf"], definitions, sPlace);
    if (auto misfit = FindMisfitOfKind(value, schema, sPlace))
        return misfit;
    return FindMisfitInside(value, schema, definitions, sPlace);
}

} // namespace zelkctl
