#pragma once

#include <string>

/// The GUID of an adapter of this machine.
std::wstring AdapterGuid();

/// Gives it settings in the registry, as Windows's installer and its dialogs write them, so that operations on it get
/// far. They stay: nobody else uses the registry.
void SetUpAdapter(const std::wstring& sGuid);

/// The Windows of the programs with this name from now on.
void SetWindows(const std::wstring& sProgram, const std::wstring& sWindows);

/// What a call must leave as it was.
struct Resources
{
    unsigned int uiHandles;
    std::size_t blocks;
    std::size_t files; ///< in the program's folder and in that for temporary files
    bool bTraceFree;   ///< the mutex of the trace file
};
Resources CountResources();
