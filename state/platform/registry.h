#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

/// A value as it lies in the registry.
struct RegistryValue
{
    std::wstring name;
    DWORD type = REG_NONE;
    std::vector<std::byte> data;
};

/// Reads all values of a key below HKEY_LOCAL_MACHINE, as they are at one moment: when the key is written meanwhile it
/// is read again, five times at most. Gives the platform's code; after a failure there are no values.
DWORD ReadValues(const std::wstring& path, std::vector<RegistryValue>& values);

/// Reads the names of all keys directly below a key of HKEY_LOCAL_MACHINE, in the registry's order. Gives the
/// platform's code.
DWORD ReadSubkeys(const std::wstring& path, std::vector<std::wstring>& names);

/// Whether there is such a key below HKEY_LOCAL_MACHINE.
bool HasKey(const std::wstring& path);

/// Whether the code says that a key is not there, which is no failure of reading.
bool IsMissingKey(DWORD code) noexcept;

/// As the registry compares names, for those of ASCII letters.
bool EqualsIgnoringCase(std::wstring_view left, std::wstring_view right) noexcept;

/// The text in lower case, for use as a key of a table; ASCII letters only.
std::string ToLower(std::string_view text);

} // namespace zelk
