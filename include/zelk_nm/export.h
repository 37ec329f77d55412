#pragma once

/// @file
/// The mark of what the DLL exports.

/// @def ZELK_NM_API
/// Marks what the DLL exports. A caller needs no definition; ZELK_NM_STATIC is for programs that link the library's
/// objects themselves.
#if defined(ZELK_NM_STATIC)
#define ZELK_NM_API
#elif defined(ZELK_NM_EXPORTS)
#define ZELK_NM_API __declspec(dllexport)
#else
#define ZELK_NM_API __declspec(dllimport)
#endif
