#include "library.h"

#include <cstddef>
#include <cstring>

#include "injector.h"
#include "machine.h"

namespace
{

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

/// Calls `fill` with the DLL, the name and the slot of each function that is imported, and puts what it answers there.
template <class Fill>
void FillSlots(HMODULE hModule, Fill fill)
{
    const DWORD dwImports = Header(hModule).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* p = At<IMAGE_IMPORT_DESCRIPTOR>(hModule, dwImports); p->FirstThunk != 0; ++p)
    {
        // Bytes are copied because a linker may lay import tables out on four bytes, not eight.
        auto* pSlot = At<std::byte>(hModule, p->FirstThunk);
        const auto* pNames = At<std::byte>(hModule, p->OriginalFirstThunk);
        IMAGE_THUNK_DATA64 import;
        while (std::memcpy(&import, pNames, sizeof(import)), import.u1.Ordinal != 0)
        {
            const auto dwName = static_cast<DWORD>(import.u1.AddressOfData + offsetof(IMAGE_IMPORT_BY_NAME, Name));
            void* pFunction = nullptr;
            std::memcpy(&pFunction, pSlot, sizeof(pFunction));
            pFunction = fill(At<char>(hModule, p->Name), At<char>(hModule, dwName), pFunction);
            DWORD dwProtection = PAGE_READWRITE;
            ::VirtualProtect(pSlot, sizeof(pFunction), PAGE_READWRITE, &dwProtection);
            std::memcpy(pSlot, &pFunction, sizeof(pFunction));
            pNames += sizeof(import);
            pSlot += sizeof(pFunction);
        }
    }
}

/// One that is mapped already stays as it is: the system's loader would do the rest of its work on it.
HMODULE Module(const char* pszName)
{
    const HMODULE hLoaded = ::GetModuleHandleA(pszName);
    return hLoaded != nullptr ? hLoaded : ::LoadLibraryA(pszName);
}

} // namespace

/// A DLL that the system only maps, so that its imports are there before its entry point runs.
class Library::Image
{
public:
    /// Its imports are the platform's functions, or with `bThunks` their thunks.
    Image(const wchar_t* pszName, bool bThunks)
        : m_hModule(::LoadLibraryExW(pszName, nullptr, DONT_RESOLVE_DLL_REFERENCES))
    {
        FillSlots(m_hModule, [&](const char* pszDll, const char* pszFunction, void*) {
            void* const pFunction = reinterpret_cast<void*>(::GetProcAddress(Module(pszDll), pszFunction));
            return bThunks ? injector::Thunk(pszFunction, pFunction) : pFunction;
        });
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    ~Image() { ::FreeLibrary(m_hModule); }

    [[nodiscard]] HMODULE Handle() const noexcept { return m_hModule; }
    bool Announce(DWORD dwReason) const
    {
        auto* const pEntryPoint =
            At<BOOL WINAPI(HINSTANCE, DWORD, void*)>(m_hModule, Header(m_hModule).AddressOfEntryPoint);
        return pEntryPoint(m_hModule, dwReason, nullptr) != FALSE;
    }

private:
    HMODULE m_hModule;
};

Library::Library(bool bState)
{
    if (bState)
    {
        LoadState();
        return;
    }
    m_library = std::make_unique<Image>(L"ZELK_NM.DLL", true);
    injector::Watch(m_library->Handle());
    injector::Continue();
    m_bLoaded = m_library->Announce(DLL_PROCESS_ATTACH);
    injector::Pause();
    m_operations = std::make_unique<Image>(L"fault_operations.dll", false);
    m_operations->Announce(DLL_PROCESS_ATTACH);
    m_pCall = reinterpret_cast<decltype(m_pCall)>(
        reinterpret_cast<void*>(::GetProcAddress(m_operations->Handle(), "CallOperation")));
}

void Library::LoadState()
{
    m_hState = ::LoadLibraryW(L"ZELK_STATE.DLL");
    m_hStateOperations = ::LoadLibraryW(L"fault_state_operations.dll");
    FillSlots(m_hState, [](const char*, const char* pszFunction, void* pFunction) {
        return injector::Thunk(pszFunction, pFunction);
    });
    injector::Watch(m_hState);
    m_pCall = reinterpret_cast<decltype(m_pCall)>(
        reinterpret_cast<void*>(::GetProcAddress(m_hStateOperations, "CallOperation")));
}

Library::~Library()
{
    if (m_hState != nullptr)
    {
        ::FreeLibrary(m_hStateOperations);
        ::FreeLibrary(m_hState);
        return;
    }
    m_operations->Announce(DLL_PROCESS_DETACH);
    m_operations.reset();
    injector::Continue();
    m_library->Announce(DLL_PROCESS_DETACH); // also when loading was refused, as the system does
    injector::Pause();
}

struct Library::Request
{
    const Library& library;
    unsigned int uiOperation;
    bool bCounted;
    Answer& answer;
    bool bExists = false;
};

bool Library::Call(unsigned int uiOperation, bool bNewThread, bool bCounted, Answer& answer)
{
    Request request = {*this, uiOperation, bCounted, answer};
    if (bNewThread)
    {
        const HANDLE hThread = ::CreateThread(nullptr, 0, &Run, &request, 0, nullptr);
        ::WaitForSingleObject(hThread, INFINITE);
        ::CloseHandle(hThread);
    }
    else
        Run(&request);
    return request.bExists;
}

DWORD WINAPI Library::Run(void* pRequest)
{
    static const std::wstring sGuid = AdapterGuid();
    auto& request = *static_cast<Request*>(pRequest);
    const auto pCount =
        request.bCounted ? [](bool bBegin) { bBegin ? injector::Continue() : injector::Pause(); } : +[](bool) {};
    request.bExists = request.library.m_pCall(request.uiOperation, sGuid.c_str(), pCount, request.answer);
    return 0;
}
