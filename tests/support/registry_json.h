#pragma once

#include <filesystem>
#include <string>

#include <support/registry_scope.h>

namespace testing_support
{

/// A text in UTF-8.
inline std::wstring Wide(const std::string& sText)
{
    return std::filesystem::path(std::u8string(sText.begin(), sText.end())).wstring();
}

/// A value of the registry as JSON has it: its type, and a number, a text or bytes; or null for none.
template <class Json>
RegistryData DataOf(const Json& value)
{
    if (value.is_null())
        return {};
    if (value[1].is_array())
        return {value[0], value[1]};
    RegistryData data =
        value[1].is_number() ? DwordData(value[1]) : StringData(Wide(value[1].template get<std::string>()));
    data.dwType = value[0];
    return data;
}

} // namespace testing_support
