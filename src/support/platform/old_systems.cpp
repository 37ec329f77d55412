// The compiler's thread library imports one function that systems before Vista lack, and a DLL with such an import does
// not load there. Defining the import's pointer here keeps it out of the import table.

#ifdef __MINGW32__

#include <winsock2.h>

#include <windows.h>

#include <support/platform/module_function.h>

namespace
{

using TickCount64 = ULONGLONG WINAPI();

ULONGLONG WINAPI TickCount() noexcept
{
    static TickCount64* const pTickCount64 =
        velmor::FindFunction<TickCount64>(::GetModuleHandleW(L"kernel32.dll"), "GetTickCount64");
    return pTickCount64 != nullptr ? pTickCount64() : ::GetTickCount();
}

} // namespace

extern "C"
{
    extern TickCount64* __imp_GetTickCount64;
    TickCount64* __imp_GetTickCount64 = &TickCount;
}

#endif
