#pragma once

#include <functional>
#include <optional>
#include <type_traits>

#include <state/fields/json_value.h>

namespace zelk
{

/// The type of a field's value without the optional around it.
template <class T>
struct Bare
{
    using Type = T;
};
template <class T>
struct Bare<std::optional<T>>
{
    using Type = T;
};

/// The label of a word of the enumeration; null for a word that is none.
template <class Enum>
const char* LabelOfWord(std::string_view text)
{
    for (const Word<Enum>& word : WordsOf<Enum>())
        if (word.word == text)
            return word.label;
    return nullptr;
}

/// One line of a field table. `Read` is a member of the record or a function of it.
template <class Record, auto Read>
constexpr Field<Record> Item(const char* key, const char* label, const char* help, const char* unit = "")
{
    using Value = std::remove_cvref_t<std::invoke_result_t<decltype(Read), const Record&>>;
    using Word = typename Bare<Value>::Type;
    Field<Record> field = {{key, label, help, unit},
                           [](const Record& record) { return JsonValue<Value>::Write(std::invoke(Read, record)); },
                           [] { return JsonValue<Value>::Schema(); },
                           nullptr};
    if constexpr (std::is_enum_v<Word>)
        field.labelOfWord = LabelOfWord<Word>;
    return field;
}

} // namespace zelk
