#pragma once

#include <span>
#include <string_view>

#include <state/fields/json.h>
#include <state/fields/words.h>
#include <state/machine/machine.h>

namespace zelk
{

/// What a field of any record is called and means.
struct FieldText
{
    const char* key;   ///< member of the JSON object, and what --get and --fields take
    const char* label; ///< what people read instead
    const char* help;  ///< a sentence for the help and the schema
    const char* unit;  ///< such as "bytes"; empty where it has none
};

/// One field of a record: the only place that says how it is called, read and described.
template <class Record>
struct Field : FieldText
{
    Json (*read)(const Record& record); ///< its value; null for one that is absent
    Json (*schema)();                   ///< JSON Schema of that value
    /// Of a field whose value is a word: what people read instead of that word. Null for other fields.
    const char* (*labelOfWord)(std::string_view word);
};

/// All fields of a record, in the order in which they are shown, under the name that the schema has for the record.
template <class Record>
struct FieldTable
{
    const char* name;
    std::span<const Field<Record>> fields;

    [[nodiscard]] auto begin() const noexcept { return fields.begin(); }
    [[nodiscard]] auto end() const noexcept { return fields.end(); }
};

template <class Record>
FieldTable<Record> FieldsOf();

template <>
FieldTable<Machine> FieldsOf();
template <>
FieldTable<Environment> FieldsOf();
template <>
FieldTable<Identity> FieldsOf();
template <>
FieldTable<ConfiguredIdentity> FieldsOf();
template <>
FieldTable<Adapter> FieldsOf();
template <>
FieldTable<Driver> FieldsOf();
template <>
FieldTable<DeviceProblem> FieldsOf();
template <>
FieldTable<IpSettings> FieldsOf();
template <>
FieldTable<ConfiguredIp> FieldsOf();
template <>
FieldTable<Address> FieldsOf();
template <>
FieldTable<Gateway> FieldsOf();
template <>
FieldTable<Lease> FieldsOf();
template <>
FieldTable<Route> FieldsOf();
template <>
FieldTable<Problem> FieldsOf();

/// The record as an object of all its fields.
template <class Record>
Json ToJson(const Record& record)
{
    Json object = Json::object();
    for (const Field<Record>& field : FieldsOf<Record>())
        object[field.key] = field.read(record);
    return object;
}

} // namespace zelk
