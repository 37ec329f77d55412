// A DLL whose exceptions live where those of ZELK_NM.DLL do, for tests that take all the places.

#include <windows.h>

namespace
{

struct Large
{
    char bytes[256];
};

/// Throws, and calls the function while the exception is handled.
template <class Exception>
DWORD CallInHandlerOf(void* pFunction)
{
    try
    {
        throw Exception();
    }
    catch (const Exception&)
    {
        reinterpret_cast<void (*)()>(pFunction)();
    }
    return 0;
}

} // namespace

extern "C"
{
    __declspec(dllexport) DWORD WINAPI CallInHandler(void* pFunction)
    {
        return CallInHandlerOf<int>(pFunction);
    }
    __declspec(dllexport) DWORD WINAPI CallInHandlerOfLarge(void* pFunction)
    {
        return CallInHandlerOf<Large>(pFunction);
    }
}
