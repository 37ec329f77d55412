#pragma once

#include <cstddef>

// What the probes look up in library_user.dll.
extern "C"
{
    /// Everything that is kept until the library is unloaded comes to be here. `pszAnswer` receives what the device
    /// manager was asked to show, or a "-".
    __declspec(dllexport) void UseEverything(char* pszAnswer, std::size_t size);

    constexpr int RIGHT = 0, WRONG = 1, EXCEPTION_LEFT = 2, NO_OPERATION = 3;
    /// Calls an operation, counted from 0, between two calls of `pCount`, and returns one of the numbers above.
    __declspec(dllexport) int CallOperation(unsigned int uiOperation, void (*pCount)(bool bBegin),
                                            const char** ppszCall);
}
