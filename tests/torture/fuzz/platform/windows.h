#pragma once

// The few names of the platform that headers beside the parsers mention. Apart from them the parsers ask the platform
// for nothing, and separating the headers for the sake of these would leave files without a subject. The functions are
// defined nowhere: nothing that a parser reaches calls them.

#include <cstdint>

using BYTE = unsigned char;
using DWORD = std::uint32_t;
using LSTATUS = std::int32_t;
using HANDLE = void*;
using HKEY = struct HKEY__*;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD KEY_SET_VALUE = 2;
inline constexpr HKEY HKEY_LOCAL_MACHINE = nullptr;

LSTATUS RegOpenKeyExW(HKEY, const wchar_t*, DWORD, DWORD, HKEY*);
LSTATUS RegSetValueExW(HKEY, const wchar_t*, DWORD, DWORD, const BYTE*, DWORD);
LSTATUS RegDeleteValueW(HKEY, const wchar_t*);
LSTATUS RegCloseKey(HKEY);
HANDLE LocalFree(HANDLE);
int CloseHandle(HANDLE);
