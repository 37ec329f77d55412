#pragma once

#include <chrono>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <state/fields/field.h>

namespace zelk
{

/// How values of a type stand in JSON, and the JSON Schema of that. Any type without a specialisation is a record.
template <class T>
struct JsonValue
{
    static Json Write(const T& record) { return ToJson(record); }
    static Json Schema();
};

/// A date and time of UTC, such as "2024-05-01T12:00:00Z".
std::string TimeText(std::chrono::sys_seconds time);

/// The reference to a record's schema among the definitions of the whole.
Json ReferenceTo(const char* definition);

/// {"type": ...}, with a format where one is given.
Json SchemaOfType(const char* type, const char* format = nullptr);

/// The schema for the same value or null.
Json OrNull(Json schema);

template <class T>
Json JsonValue<T>::Schema()
{
    return ReferenceTo(FieldsOf<T>().name);
}

template <>
struct JsonValue<bool>
{
    static Json Write(bool value) { return value; }
    static Json Schema() { return SchemaOfType("boolean"); }
};

template <std::unsigned_integral Number>
requires(!std::same_as<Number, bool>) struct JsonValue<Number>
{
    static Json Write(Number value) { return value; }
    static Json Schema() { return {{"type", "integer"}, {"minimum", 0}}; }
};

template <>
struct JsonValue<std::string>
{
    static Json Write(const std::string& value) { return value; }
    static Json Schema() { return SchemaOfType("string"); }
};

template <>
struct JsonValue<std::chrono::sys_seconds>
{
    static Json Write(std::chrono::sys_seconds value) { return TimeText(value); }
    static Json Schema() { return SchemaOfType("string", "date-time"); }
};

template <class T>
Json SchemaOfText();
template <>
Json SchemaOfText<IpAddress>();
template <>
Json SchemaOfText<IpPrefix>();
template <>
Json SchemaOfText<HardwareAddress>();
template <>
Json SchemaOfText<Guid>();

/// Addresses, GUIDs and whatever else has one text.
template <class T>
requires requires(const T& value)
{
    {
        value.ToText()
        } -> std::same_as<std::string>;
}
struct JsonValue<T>
{
    static Json Write(const T& value) { return value.ToText(); }
    static Json Schema() { return SchemaOfText<T>(); }
};

template <>
struct JsonValue<Lifetime>
{
    static Json Write(const Lifetime& value) { return value.IsInfinite() ? Json("infinite") : Json(value.seconds); }
    static Json Schema() { return {{"anyOf", {JsonValue<std::uint32_t>::Schema(), {{"const", "infinite"}}}}}; }
};

template <class Enum>
requires std::is_enum_v<Enum>
struct JsonValue<Enum>
{
    static Json Write(Enum value) { return WordOf(value).word; }
    static Json Schema()
    {
        Json words = Json::array();
        for (const Word<Enum>& word : WordsOf<Enum>())
            words.push_back(word.word);
        return {{"enum", std::move(words)}};
    }
};

template <class T>
struct JsonValue<std::optional<T>>
{
    static Json Write(const std::optional<T>& value) { return value ? JsonValue<T>::Write(*value) : Json(); }
    static Json Schema() { return OrNull(JsonValue<T>::Schema()); }
};

template <class T>
struct JsonValue<AutomaticOr<T>>
{
    static Json Write(const AutomaticOr<T>& value)
    {
        const T* const set = std::get_if<T>(&value);
        return set != nullptr ? JsonValue<T>::Write(*set) : Json("automatic");
    }
    static Json Schema() { return {{"anyOf", {JsonValue<T>::Schema(), {{"const", "automatic"}}}}}; }
};

template <class T>
struct JsonValue<std::vector<T>>
{
    static Json Write(const std::vector<T>& values)
    {
        Json array = Json::array();
        for (const T& value : values)
            array.push_back(JsonValue<T>::Write(value));
        return array;
    }
    static Json Schema() { return {{"type", "array"}, {"items", JsonValue<T>::Schema()}}; }
};

} // namespace zelk
