#pragma once

#include <cstddef>

// What the probe looks up in library_user.dll.
extern "C"
{
    /// Everything that is kept until the library is unloaded comes to be here. `pszAnswer` receives the version,
    /// the number of adapters and what the device manager was asked to show, or a "-".
    __declspec(dllexport) void UseEverything(char* pszAnswer, std::size_t size);
}
