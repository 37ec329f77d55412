#pragma once

#include <winsock2.h>

#include <windows.h>

#include <zelk_nm/string.h>

namespace velmor
{

/// The full path of a loaded module, or of the process's executable for a null handle. The buffer grows by 260
/// characters until the path fits. On failure `sPath` is unchanged and `dwLastError` is the platform's reason.
bool GetModulePath(HMODULE hModule, velmor::string& sPath, DWORD& dwLastError);

/// Everything before the last backslash; the whole path when there is none.
velmor::string DirectoryOf(velmor::string sPath);

/// Text from a settings (.ini) file, at most 259 characters of it; the default where file, section or key is missing.
velmor::string ReadProfileText(const wchar_t* pszSection, const wchar_t* pszKey, const velmor::string& sDefault,
                               const velmor::string& sFile);

} // namespace velmor
