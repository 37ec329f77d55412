#pragma once

// Where a program that loads the library has its trace and the settings of that. The library writes there and the tool
// reads there; this header is part of neither's interface.

namespace zelk_common
{

/// The file of the last load of the library, and the name of the mutex under which every line is written. The load
/// before it has the same name with the other extension.
inline constexpr wchar_t TRACE_FILE[] = L"TOLVA_trace.log";
inline constexpr wchar_t PREVIOUS_EXTENSION[] = L".old";
/// Below the program's directory, unless the log settings name another one.
inline constexpr wchar_t LOG_DIRECTORY[] = L"\\Logfiles";

inline constexpr wchar_t LOG_SETTINGS[] = L"\\zlk.ini";
inline constexpr wchar_t LOG_SECTION[] = L"File Locations";
inline constexpr wchar_t LOG_KEY[] = L"Logfiles";

inline constexpr wchar_t TRACE_SETTINGS[] = L"\\trace.ini";
inline constexpr wchar_t TRACE_SECTION[] = L"Main";
inline constexpr wchar_t TRACE_KEY[] = L"TOLVA_TraceLevel";
/// Where a boot image of Windows 5.2 has its trace settings instead of in the program's directory.
inline constexpr wchar_t BOOT_IMAGE_DIRECTORY[] = L"Z:\\ZELK";

} // namespace zelk_common
