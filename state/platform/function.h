#pragma once

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

/// A function that only some systems have, of a module that the program has loaded; null where it is missing.
template <class Function>
Function* FindFunction(const wchar_t* module, const char* name) noexcept
{
    const HMODULE handle = ::GetModuleHandleW(module);
    if (handle == nullptr)
        return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(handle, name)));
}

} // namespace zelk
