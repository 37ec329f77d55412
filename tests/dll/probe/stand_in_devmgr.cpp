// Stands in for the device manager, with its property sheet or, on a system that has none, without.

#include <cwchar>

#include <winsock2.h>

#include <windows.h>

extern "C"
{
    __declspec(dllexport) wchar_t ShownCommandLine[256] = L"-";

#ifdef WITH_SHEET
    __declspec(dllexport) void WINAPI
        DeviceProperties_RunDLLW(HWND hwndOwner, HINSTANCE hInstance, const wchar_t* pszCommandLine, int nShow);

    void WINAPI DeviceProperties_RunDLLW(HWND hwndOwner, HINSTANCE hInstance, const wchar_t* pszCommandLine, int nShow)
    {
        const bool bExpected = hwndOwner == nullptr && hInstance == nullptr && nShow == 0;
        std::wcsncpy(ShownCommandLine, bExpected ? pszCommandLine : L"other arguments", 255);
    }
#endif
}
