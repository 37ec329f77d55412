#include <state/platform/registry.h>

#include <algorithm>
#include <span>
#include <utility>

#include <state/platform/handles.h>

namespace zelk
{
namespace
{

constexpr DWORD LONGEST_NAME = 16384; ///< of a value, with its terminator

DWORD OpenKey(const std::wstring& path, UniqueKey& key)
{
    HKEY opened = nullptr;
    const LSTATUS code = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &opened);
    key.reset(code == ERROR_SUCCESS ? opened : nullptr);
    return static_cast<DWORD>(code);
}

/// What a key says of itself.
struct KeyInformation
{
    DWORD longestName = 0; ///< in characters
    DWORD longestData = 0; ///< in bytes
    FILETIME written = {};
};

DWORD Ask(HKEY key, KeyInformation& information)
{
    return static_cast<DWORD>(::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                 &information.longestName, &information.longestData, nullptr,
                                                 &information.written));
}

/// Room for the largest value of a key, made larger when a larger one comes.
struct ValueBuffer
{
    explicit ValueBuffer(const KeyInformation& information)
        : name(information.longestName + 1, L'\0'), data(information.longestData)
    {
    }

    std::wstring name;
    std::vector<std::byte> data;
};

DWORD ReadValue(HKEY key, DWORD index, ValueBuffer& buffer, RegistryValue& value)
{
    constexpr int MOST_TRIES = 8;
    DWORD code = ERROR_MORE_DATA;
    for (int i = 0; i < MOST_TRIES && code == ERROR_MORE_DATA; ++i)
    {
        auto length = static_cast<DWORD>(buffer.name.size());
        auto size = static_cast<DWORD>(buffer.data.size());
        code = static_cast<DWORD>(::RegEnumValueW(key, index, buffer.name.data(), &length, nullptr, &value.type,
                                                  reinterpret_cast<BYTE*>(buffer.data.data()), &size));
        if (code == ERROR_MORE_DATA)
        {
            buffer.name.resize(LONGEST_NAME);
            buffer.data.resize(std::max<std::size_t>(size, 2 * buffer.data.size() + 16));
            continue;
        }
        if (code != ERROR_SUCCESS)
            return code;
        value.name.assign(buffer.name, 0, length);
        const auto data = std::span(buffer.data).first(std::min<std::size_t>(size, buffer.data.size()));
        value.data.assign(data.begin(), data.end());
    }
    return code;
}

DWORD ReadOnce(HKEY key, const KeyInformation& information, std::vector<RegistryValue>& values)
{
    ValueBuffer buffer(information);
    values.clear();
    while (true)
    {
        RegistryValue value;
        const DWORD code = ReadValue(key, static_cast<DWORD>(values.size()), buffer, value);
        if (code != ERROR_SUCCESS)
            return code == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : code;
        values.push_back(std::move(value));
    }
}

/// A value that goes away while the others are counted through would take another one's place.
DWORD ReadUndisturbed(HKEY key, std::vector<RegistryValue>& values)
{
    constexpr int MOST_READINGS = 5;
    KeyInformation before;
    DWORD code = Ask(key, before);
    for (int i = 0; i < MOST_READINGS && code == ERROR_SUCCESS; ++i)
    {
        KeyInformation after;
        code = ReadOnce(key, before, values);
        if (code == ERROR_SUCCESS)
            code = Ask(key, after);
        if (::CompareFileTime(&before.written, &after.written) == 0)
            break;
        before = after;
    }
    return code;
}

wchar_t ToLower(wchar_t character) noexcept
{
    return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

} // namespace

DWORD ReadValues(const std::wstring& path, std::vector<RegistryValue>& values)
{
    UniqueKey key;
    DWORD code = OpenKey(path, key);
    if (code == ERROR_SUCCESS)
        code = ReadUndisturbed(key.get(), values);
    if (code != ERROR_SUCCESS)
        values.clear();
    return code;
}

DWORD ReadSubkeys(const std::wstring& path, std::vector<std::wstring>& names)
{
    constexpr DWORD LONGEST_KEY_NAME = 256; // with its terminator
    UniqueKey key;
    DWORD code = OpenKey(path, key);
    wchar_t name[LONGEST_KEY_NAME];
    for (DWORD index = 0; code == ERROR_SUCCESS; ++index)
    {
        DWORD length = LONGEST_KEY_NAME;
        code = static_cast<DWORD>(::RegEnumKeyExW(key.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr));
        if (code == ERROR_SUCCESS)
            names.emplace_back(name, length);
    }
    return code == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : code;
}

bool HasKey(const std::wstring& path)
{
    UniqueKey key;
    return OpenKey(path, key) == ERROR_SUCCESS;
}

bool IsMissingKey(DWORD code) noexcept
{
    return code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND;
}

bool EqualsIgnoringCase(std::wstring_view left, std::wstring_view right) noexcept
{
    return std::ranges::equal(left, right, [](wchar_t a, wchar_t b) { return ToLower(a) == ToLower(b); });
}

std::string ToLower(std::string_view text)
{
    std::string lower(text);
    for (char& character : lower)
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    return lower;
}

} // namespace zelk
