#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <state/fields/json_value.h>

namespace zelk
{

/// Something of an adapter that one reading of the machine shows differently from the reading before.
struct AdapterEvent
{
    std::chrono::sys_seconds time; ///< of the second reading
    std::string adapter;           ///< its name, as it was before if it was there
    std::optional<Guid> guid;
    std::string path = {}; ///< of the item in the adapter's JSON; "adapter" for one that was added or removed
    Json before = {};      ///< null for an adapter that was not there
    Json after = {};       ///< null for an adapter that was removed
};

/// What has changed from one reading to another, adapter by adapter in the order of the first, then those that were
/// added. Left out is what changes all the time by itself: the speed of the link and how long addresses stay valid.
std::vector<AdapterEvent> EventsBetween(const Machine& before, const Machine& after, std::chrono::sys_seconds time);

/// Any value.
template <>
struct JsonValue<Json>
{
    static Json Write(const Json& value) { return value; }
    static Json Schema() { return Json::object(); }
};

template <>
FieldTable<AdapterEvent> FieldsOf();

} // namespace zelk
