#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <state/desired/fault.h>
#include <state/fields/json.h>
#include <state/values/ip_address.h>

namespace zelk
{

/// Appends that a value cannot be meant; for a reader, which then gives nothing.
std::nullopt_t Refuse(std::vector<Fault>& faults, const std::string& place, std::string text);

/// Reads JSON that a person or a program has written. Nothing, with a fault, for a text that is none. A key that stands
/// twice in one object is a fault too.
std::optional<Json> ParseJson(std::string_view text, std::vector<Fault>& faults);

// What ObjectReader reads members with.

std::optional<bool> ReadBool(const Json& json, const std::string& place, std::vector<Fault>& faults);
std::optional<std::string> ReadText(const Json& json, const std::string& place, std::vector<Fault>& faults);
std::optional<std::uint32_t> ReadNumber(const Json& json, const std::string& place, std::vector<Fault>& faults);
std::optional<IpAddress> ReadAddress(const Json& json, const std::string& place, std::vector<Fault>& faults);
std::optional<std::vector<std::string>> ReadTexts(const Json& json, const std::string& place,
                                                  std::vector<Fault>& faults);

} // namespace zelk
