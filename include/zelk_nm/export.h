#pragma once

/// \file
/// The macro that marks exported names.

/// \def ZELK_NM_API
/// Marks a name that the DLL exports. Programs that use the DLL define nothing. Programs that link the object files of
/// the library define ZELK_NM_STATIC.
#if defined(ZELK_NM_STATIC)
#define ZELK_NM_API
#elif defined(ZELK_NM_EXPORTS)
#define ZELK_NM_API __declspec(dllexport)
#else
#define ZELK_NM_API __declspec(dllimport)
#endif
