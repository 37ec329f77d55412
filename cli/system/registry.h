#pragma once

#include <optional>
#include <string>
#include <vector>

#include <zelk_nm/string.h>

namespace zelkctl
{

// Keys are below HKEY_LOCAL_MACHINE. What cannot be read is as good as not there.

bool KeyExists(const std::wstring& sKey);
/// The names of the keys directly below this one.
std::vector<std::wstring> SubKeys(const std::wstring& sKey);

/// Whether there is such a value, of any type.
bool HasValue(const std::wstring& sKey, const wchar_t* pszValue);
/// Nothing also for a value of another type than plain text: it is none for the library either.
std::optional<velmor::string> ReadText(const std::wstring& sKey, const wchar_t* pszValue);

} // namespace zelkctl
