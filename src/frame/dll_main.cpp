#include <winsock2.h>

#include <windows.h>

#include <frame/module_statics.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved);

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason != DLL_PROCESS_ATTACH)
        return TRUE;
    ::DisableThreadLibraryCalls(hInstance);
    return HasModuleStatics();
}
