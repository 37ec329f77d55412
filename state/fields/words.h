#pragma once

#include <optional>
#include <span>
#include <string_view>

#include <state/machine/machine.h>

namespace zelk
{

/// One value of an enumeration: as JSON says it, and as people read it.
struct WordText
{
    const char* word;
    const char* label;
};

template <class Enum>
struct Word : WordText
{
    Enum value;
};

/// All words of an enumeration, in the order of their documentation.
template <class Enum>
std::span<const Word<Enum>> WordsOf();

template <>
std::span<const Word<BackEnd>> WordsOf();
template <>
std::span<const Word<Membership>> WordsOf();
template <>
std::span<const Word<RouteStore>> WordsOf();
template <>
std::span<const Word<RouteOrigin>> WordsOf();
template <>
std::span<const Word<RouteProtocol>> WordsOf();
template <>
std::span<const Word<AddressOrigin>> WordsOf();
template <>
std::span<const Word<DadState>> WordsOf();
template <>
std::span<const Word<NetbiosSetting>> WordsOf();
template <>
std::span<const Word<ConfigurationSource>> WordsOf();
template <>
std::span<const Word<AdapterType>> WordsOf();
template <>
std::span<const Word<AdapterKind>> WordsOf();
template <>
std::span<const Word<AdapterStatus>> WordsOf();

/// The value's word; that of the first value for one that has none.
template <class Enum>
const Word<Enum>& WordOf(Enum value)
{
    for (const Word<Enum>& word : WordsOf<Enum>())
        if (word.value == value)
            return word;
    return WordsOf<Enum>().front();
}

/// The value of a word of JSON; nothing for another text.
template <class Enum>
std::optional<Enum> ParseWord(std::string_view text)
{
    for (const Word<Enum>& word : WordsOf<Enum>())
        if (word.word == text)
            return word.value;
    return std::nullopt;
}

} // namespace zelk
