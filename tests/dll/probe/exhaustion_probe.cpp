// The library while no memory can be had: loading it, and calling every operation in a library and in a thread that
// have never thrown before. All allocations from the n-th on fail, and then only the n-th. Argument: the file for the
// answer, which names what went wrong and what is left in the end.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <support/import_patch.h>
#include <support/resources.h>

#include "library_user.h"

namespace
{

std::FILE* pAnswer;

unsigned int uiAllocations; ///< since the counting began
unsigned int uiFirstFailure, uiLastFailure;
bool bCounting, bFailed;

bool Fails()
{
    if (!bCounting || ++uiAllocations < uiFirstFailure || uiAllocations > uiLastFailure)
        return false;
    return bFailed = true;
}

void* Malloc(std::size_t size)
{
    return Fails() ? nullptr : std::malloc(size);
}

std::intptr_t NoCommand(int, const wchar_t*, ...)
{
    return 0;
}

LSTATUS WINAPI NoRegistryKey(HKEY, const wchar_t*, DWORD, wchar_t*, DWORD, REGSAM, SECURITY_ATTRIBUTES*, HKEY*, DWORD*)
{
    return ERROR_ACCESS_DENIED;
}

template <class Function>
void* Address(Function* pFunction)
{
    return reinterpret_cast<void*>(pFunction);
}

/// The library with its allocations counted, and with nothing that it could change.
struct Patches
{
    HMODULE hLibrary = ::GetModuleHandleW(L"ZELK_NM.DLL");
    testing_support::ImportSlots malloc{hLibrary, "malloc", Address(&Malloc)};
    testing_support::ImportSlots spawn{hLibrary, "_wspawnlp", Address(&NoCommand)};
    testing_support::ImportSlots createKey{hLibrary, "RegCreateKeyExW", Address(&NoRegistryKey)};
};

template <class T>
T* At(HMODULE hModule, DWORD dwOffset)
{
    return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(hModule) + dwOffset);
}

const IMAGE_OPTIONAL_HEADER64& Header(HMODULE hModule)
{
    const auto dwHeaders = static_cast<DWORD>(At<IMAGE_DOS_HEADER>(hModule, 0)->e_lfanew);
    return At<IMAGE_NT_HEADERS64>(hModule, dwHeaders)->OptionalHeader;
}

/// What the system's loader does with the imports, for a library that must be patched before its entry point runs.
void ResolveImports(HMODULE hModule)
{
    const DWORD dwImports = Header(hModule).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* p = At<IMAGE_IMPORT_DESCRIPTOR>(hModule, dwImports); p->FirstThunk != 0; ++p)
    {
        const HMODULE hDll = ::LoadLibraryA(At<char>(hModule, p->Name));
        // Bytes are copied because a linker may lay import tables out on four bytes, not eight.
        auto* pSlot = At<std::byte>(hModule, p->FirstThunk);
        const auto* pNames = At<std::byte>(hModule, p->OriginalFirstThunk);
        DWORD dwProtection = PAGE_READWRITE;
        IMAGE_THUNK_DATA64 import;
        while (std::memcpy(&import, pNames, sizeof(import)), import.u1.Ordinal != 0)
        {
            const auto dwName = static_cast<DWORD>(import.u1.AddressOfData + offsetof(IMAGE_IMPORT_BY_NAME, Name));
            void* const pFunction = Address(::GetProcAddress(hDll, At<char>(hModule, dwName)));
            ::VirtualProtect(pSlot, sizeof(pFunction), PAGE_READWRITE, &dwProtection);
            std::memcpy(pSlot, &pFunction, sizeof(pFunction));
            pNames += sizeof(import);
            pSlot += sizeof(pFunction);
        }
    }
}

BOOL CallEntryPoint(HMODULE hLibrary, DWORD dwReason)
{
    return At<BOOL WINAPI(HINSTANCE, DWORD, void*)>(hLibrary, Header(hLibrary).AddressOfEntryPoint)(hLibrary, dwReason,
                                                                                                    nullptr);
}

/// Loads and unloads it. What the entry point answers is free, but it must answer.
void Load()
{
    const HMODULE hLibrary = ::LoadLibraryExW(L"ZELK_NM.DLL", nullptr, DONT_RESOLVE_DLL_REFERENCES);
    ResolveImports(hLibrary);
    {
        const Patches patches;
        bCounting = true;
        const BOOL bLoaded = CallEntryPoint(hLibrary, DLL_PROCESS_ATTACH);
        bCounting = false;
        if (bLoaded)
            CallEntryPoint(hLibrary, DLL_PROCESS_DETACH);
    }
    ::FreeLibrary(hLibrary);
}

struct Call
{
    unsigned int uiOperation;
    int iResult = NO_OPERATION;
    const char* pszCall = "";

    static DWORD WINAPI Run(void* pArgument)
    {
        auto& call = *static_cast<Call*>(pArgument);
        auto* const pCallOperation = reinterpret_cast<decltype(&CallOperation)>(
            Address(::GetProcAddress(::GetModuleHandleW(L"library_user.dll"), "CallOperation")));
        call.iResult = pCallOperation(
            call.uiOperation, [](bool bBegin) { bCounting = bBegin; }, &call.pszCall);
        return 0;
    }
};

/// Calls an operation in a thread that has never thrown. False when there is no such operation.
bool CallInNewThread(unsigned int uiOperation)
{
    Call call = {uiOperation};
    const HANDLE hThread = ::CreateThread(nullptr, 0, &Call::Run, &call, 0, nullptr);
    ::WaitForSingleObject(hThread, INFINITE);
    ::CloseHandle(hThread);
    if (call.iResult == WRONG || call.iResult == EXCEPTION_LEFT)
        std::fprintf(pAnswer, "%s: %d from allocation %u to %u; ", call.pszCall, call.iResult, uiFirstFailure,
                     uiLastFailure);
    return call.iResult != NO_OPERATION;
}

/// Runs `body` with ever later failures until none is met; `step` makes them sparser.
template <class Body>
void FailAllocations(double step, Body body)
{
    for (const bool bAll : {true, false})
        for (double failure = 1; failure == 1 || bFailed; failure = failure * step + 1)
        {
            uiAllocations = 0;
            bFailed = false;
            uiFirstFailure = static_cast<unsigned int>(failure);
            uiLastFailure = bAll ? ~0U : uiFirstFailure;
            body();
        }
}

void CallEverything(double step)
{
    FailAllocations(step, [] { Load(); });
    bool bMore = true;
    for (unsigned int operation = 0; bMore; ++operation)
    {
        // Each in a library that has never thrown.
        const HMODULE hUser = ::LoadLibraryW(L"library_user.dll");
        {
            const Patches patches;
            FailAllocations(step, [&] { bMore = CallInNewThread(operation); });
        }
        ::FreeLibrary(hUser);
    }
}

} // namespace

int main(int argc, char** argv)
{
    pAnswer = argc >= 2 ? std::fopen(argv[1], "w") : nullptr;
    if (pAnswer == nullptr)
        return 2;
    const double step = argc > 2 ? std::atof(argv[2]) : 3;
    CallEverything(8); // the platform keeps some things from their first use
    const unsigned int uiHandles = testing_support::CountHandles();
    const std::size_t blocks = testing_support::CountHeapBlocks();
    CallEverything(step);
    std::fprintf(pAnswer, "blocks: %d, ", static_cast<int>(testing_support::CountHeapBlocks() - blocks));
    std::fprintf(pAnswer, "handles: %d", static_cast<int>(testing_support::CountHandles() - uiHandles));
    return std::fclose(pAnswer);
}
