// The compiler's thread library imports one function that systems before Vista lack, and a DLL with such an import does
// not load there. Defining the import's pointer here keeps it out of the import table.

#ifdef __MINGW32__

#include <winsock2.h>

#include <windows.h>

namespace
{

using TickCount64 = ULONGLONG(WINAPI*)();

TickCount64 FindTickCount64() noexcept
{
    const HMODULE hKernel = ::GetModuleHandleW(L"kernel32.dll");
    return reinterpret_cast<TickCount64>(
        reinterpret_cast<void*>(hKernel != nullptr ? ::GetProcAddress(hKernel, "GetTickCount64") : nullptr));
}

ULONGLONG WINAPI TickCount() noexcept
{
    static const TickCount64 pTickCount64 = FindTickCount64();
    return pTickCount64 != nullptr ? pTickCount64() : ::GetTickCount();
}

} // namespace

extern "C"
{
    extern TickCount64 __imp_GetTickCount64;
    TickCount64 __imp_GetTickCount64 = &TickCount;
}

#endif
