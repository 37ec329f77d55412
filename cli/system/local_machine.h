#pragma once

#include <optional>
#include <string>

namespace zelkctl
{

// Keys are below HKEY_LOCAL_MACHINE. What cannot be read counts as missing.
bool LocalMachineHas(const wchar_t* pszKey);

/// Nothing also for a value of another type than plain text.
std::optional<std::wstring> LocalMachineText(const wchar_t* pszKey, const wchar_t* pszValue);

} // namespace zelkctl
