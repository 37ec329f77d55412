// Loads the library, uses everything of it and unloads it, several times. Argument: the file for the answer, which is
// what the last use gave and what is left of it.

#include <cstdio>
#include <cstring>

#include <support/import_patch.h>
#include <support/resources.h>

namespace
{

/// Wine's own ends the process.
DWORD WINAPI SetAdapterIpAddress(char*, BOOL, ULONG, ULONG, ULONG)
{
    return NO_ERROR;
}

FARPROC FindFunction(HMODULE hModule, const char* pszName)
{
    return std::strcmp(pszName, "SetAdapterIpAddress") != 0
               ? ::GetProcAddress(hModule, pszName)
               : reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&SetAdapterIpAddress));
}

void Use(HMODULE hUser, char* pszAnswer, std::size_t size)
{
    using UseEverything = void(char* pszAnswer, std::size_t size);
    const auto patch = PATCH_IMPORT(GetProcAddress, FindFunction, ::GetModuleHandleW(L"ZELK_NM.DLL"));
    reinterpret_cast<UseEverything*>(reinterpret_cast<void*>(::GetProcAddress(hUser, "UseEverything")))(pszAnswer,
                                                                                                        size);
}

} // namespace

int main(int argc, char** argv)
{
    std::FILE* pAnswer = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    if (pAnswer == nullptr)
        return 2;
    unsigned int uiBefore = 0;
    unsigned int uiAfter = 0;
    char answer[300] = "";
    // The platform keeps some handles from the first use.
    for (int round = 0; round < 4; ++round)
    {
        uiBefore = uiAfter;
        const HMODULE hUser = ::LoadLibraryW(L"library_user.dll");
        if (hUser == nullptr)
            return 3;
        Use(hUser, answer, sizeof(answer));
        ::FreeLibrary(hUser);
        uiAfter = testing_support::CountHandles();
    }
    std::fprintf(pAnswer, "%s\n", answer);
    for (const char* pszModule : {"ZELK_NM.DLL", "DEVMGR.DLL", "IPHLPAPI.DLL"})
        if (::GetModuleHandleA(pszModule) != nullptr)
            std::fprintf(pAnswer, "%s is still loaded\n", pszModule);
    std::fprintf(pAnswer, "handles: %d", static_cast<int>(uiAfter) - static_cast<int>(uiBefore));
    return std::fclose(pAnswer);
}
