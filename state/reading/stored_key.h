#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <state/machine/problem.h>
#include <state/platform/registry.h>
#include <state/values/ip_address.h>

namespace zelk
{

/// What a registry value gave: something, nothing because there is no such value, or nothing because it could not be
/// read.
template <class T>
struct Stored
{
    std::optional<T> value;
    bool readable = true;

    /// The value, or what one that is not there stands for; nothing for one that could not be read.
    [[nodiscard]] std::optional<T> Or(T missing) const
    {
        if (!readable)
            return std::nullopt;
        return value ? value : std::optional<T>(std::move(missing));
    }
};

/// A registry key below HKEY_LOCAL_MACHINE, read once with all its values. Values that make no sense are reported; of a
/// key that is not there, or could not be read, no value is readable.
class StoredKey
{
public:
    /// The problems take in what this key reports, and outlive it. That the key is missing is not reported.
    StoredKey(std::wstring path, std::vector<Problem>& problems);

    [[nodiscard]] bool IsThere() const noexcept { return m_code == ERROR_SUCCESS; }
    [[nodiscard]] bool IsMissing() const noexcept { return IsMissingKey(m_code); }
    /// The key itself as a problem, of a key that should be there.
    void ReportMissing(std::string text);

    [[nodiscard]] const std::vector<RegistryValue>& Values() const noexcept { return m_values; }

    [[nodiscard]] Stored<std::string> Text(std::wstring_view name);
    [[nodiscard]] Stored<std::vector<std::string>> Texts(std::wstring_view name);
    [[nodiscard]] Stored<std::uint32_t> Number(std::wstring_view name);
    /// A text that is one address. An empty one is as good as none.
    [[nodiscard]] Stored<IpAddress> Address(std::wstring_view name);
    /// A list of texts, each an address; unspecified ones left out.
    [[nodiscard]] Stored<std::vector<IpAddress>> Addresses(std::wstring_view name, Family family);
    /// Addresses in one text, separated by commas or blanks; unspecified ones left out.
    [[nodiscard]] Stored<std::vector<IpAddress>> AddressesInText(std::wstring_view name, Family family);

    /// Reports that the value makes no sense; gives what stands for such a value.
    template <class T>
    Stored<T> Refuse(std::wstring_view name, std::string_view why)
    {
        Report(name, why);
        return {std::nullopt, false};
    }

private:
    [[nodiscard]] const RegistryValue* Find(std::wstring_view name) const noexcept;
    void Report(std::wstring_view name, std::string_view why);

    template <class T, class Decode>
    Stored<T> Read(std::wstring_view name, bool (*isOfType)(DWORD), std::string_view kind, Decode&& decode);
    template <class List>
    Stored<std::vector<IpAddress>> ParseAddresses(std::wstring_view name, Family family, const List& texts);

    std::wstring m_path;
    std::vector<Problem>* m_problems;
    std::vector<RegistryValue> m_values;
    DWORD m_code;
};

} // namespace zelk
