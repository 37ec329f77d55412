#pragma once

#include <winsock2.h>

#include <windows.h>

namespace velmor
{

/// A function that only some systems have, looked up at run time; null where it is missing or there is no module. The
/// last error is the look-up's.
template <class Function>
Function* FindFunction(HMODULE hModule, const char* pszName) noexcept
{
    if (hModule == nullptr)
        return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(hModule, pszName)));
}

} // namespace velmor
