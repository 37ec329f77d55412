#include <state/reading/stored_key.h>

#include <algorithm>
#include <utility>

#include <state/platform/utf8.h>
#include <state/reading/reading.h>
#include <state/values/registry_data.h>

namespace zelk
{
namespace
{

bool IsText(DWORD type) noexcept
{
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

bool IsTexts(DWORD type) noexcept
{
    return type == REG_MULTI_SZ;
}

bool IsNumber(DWORD type) noexcept
{
    return type == REG_DWORD;
}

} // namespace

StoredKey::StoredKey(std::wstring path, std::vector<Problem>& problems)
    : m_path(std::move(path)), m_problems(&problems), m_code(ReadValues(m_path, m_values))
{
    if (!IsThere() && !IsMissing())
        ReportMissing("The key cannot be read.");
}

void StoredKey::ReportMissing(std::string text)
{
    m_problems->push_back(MakeProblem(m_code, ToUtf8(m_path), std::move(text)));
}

const RegistryValue* StoredKey::Find(std::wstring_view name) const noexcept
{
    const auto found =
        std::ranges::find_if(m_values, [&](const auto& value) { return EqualsIgnoringCase(value.name, name); });
    return found != m_values.end() ? &*found : nullptr;
}

void StoredKey::Report(std::wstring_view name, std::string_view why)
{
    const std::string value = ToUtf8(name);
    m_problems->push_back(MakeProblem(ERROR_INVALID_DATA, ToUtf8(m_path) + '\\' + value,
                                      "The registry value \"" + value + "\" " + std::string(why) + '.'));
}

/// `decode` gives an optional: nothing for data that are none of the type.
template <class T, class Decode>
Stored<T> StoredKey::Read(std::wstring_view name, bool (*isOfType)(DWORD), std::string_view kind, Decode&& decode)
{
    const RegistryValue* const value = Find(name);
    if (value == nullptr)
        return {std::nullopt, IsThere()};
    std::optional<T> decoded = isOfType(value->type) ? decode(value->data) : std::nullopt;
    if (!decoded)
        return Refuse<T>(name, "is not " + std::string(kind) + " (type " + std::to_string(value->type) + ", " +
                                   std::to_string(value->data.size()) + " bytes)");
    return {std::move(decoded), true};
}

Stored<std::string> StoredKey::Text(std::wstring_view name)
{
    return Read<std::string>(name, IsText, "a text",
                             [](const auto& data) { return std::optional(ToUtf8(DecodeText(data))); });
}

Stored<std::vector<std::string>> StoredKey::Texts(std::wstring_view name)
{
    return Read<std::vector<std::string>>(name, IsTexts, "a list of texts", [](const auto& data) {
        std::vector<std::string> texts;
        for (const std::u16string& text : DecodeTexts(data))
            texts.push_back(ToUtf8(text));
        return std::optional(std::move(texts));
    });
}

Stored<std::uint32_t> StoredKey::Number(std::wstring_view name)
{
    return Read<std::uint32_t>(name, IsNumber, "a number", [](const auto& data) { return DecodeNumber(data); });
}

Stored<IpAddress> StoredKey::Address(std::wstring_view name)
{
    const Stored<std::string> text = Text(name);
    if (text.value.value_or("").empty())
        return {std::nullopt, text.readable};
    const auto address = IpAddress::Parse(*text.value);
    if (!address)
        return Refuse<IpAddress>(name, "is not an address");
    return {*address, true};
}

template <class List>
Stored<std::vector<IpAddress>> StoredKey::ParseAddresses(std::wstring_view name, Family family, const List& texts)
{
    std::vector<IpAddress> addresses;
    for (const std::string_view text : texts)
    {
        const auto address = IpAddress::Parse(text);
        if (!address || address->GetFamily() != family)
            return Refuse<std::vector<IpAddress>>(name, std::string("holds something that is not an ") +
                                                            FamilyName(family) + " address");
        if (!address->IsUnspecified())
            addresses.push_back(*address);
    }
    return {std::move(addresses), true};
}

Stored<std::vector<IpAddress>> StoredKey::Addresses(std::wstring_view name, Family family)
{
    const auto texts = Texts(name);
    if (!texts.value)
        return {std::nullopt, texts.readable};
    return ParseAddresses(name, family, *texts.value);
}

Stored<std::vector<IpAddress>> StoredKey::AddressesInText(std::wstring_view name, Family family)
{
    const auto text = Text(name);
    if (!text.value)
        return {std::nullopt, text.readable};
    return ParseAddresses(name, family, SplitList(*text.value));
}

} // namespace zelk
