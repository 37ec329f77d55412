#include "library.h"

#include <support/image.h>

#include "injector.h"
#include "machine.h"

using testing_support::Image;
using testing_support::Import;

namespace
{

/// One that is mapped already stays as it is: the system's loader would do the rest of its work on it.
HMODULE Module(const char* pszName)
{
    const HMODULE hLoaded = ::GetModuleHandleA(pszName);
    return hLoaded != nullptr ? hLoaded : ::LoadLibraryA(pszName);
}

} // namespace

/// A DLL that the system only maps, so that its imports are there before its entry point runs.
class Library::Mapped
{
public:
    /// Its imports are the platform's functions, or with `bThunks` their thunks.
    Mapped(const wchar_t* pszName, bool bThunks)
        : m_hModule(::LoadLibraryExW(pszName, nullptr, DONT_RESOLVE_DLL_REFERENCES))
    {
        for (const Import& import : Image(m_hModule).ImportSlots())
        {
            auto* const pFunction =
                reinterpret_cast<void*>(::GetProcAddress(Module(import.pszDll), import.pszFunction));
            import.Redirect(bThunks ? injector::Thunk(import.pszFunction, pFunction) : pFunction);
        }
    }
    Mapped(const Mapped&) = delete;
    Mapped& operator=(const Mapped&) = delete;
    ~Mapped() { ::FreeLibrary(m_hModule); }

    [[nodiscard]] HMODULE Handle() const noexcept { return m_hModule; }
    bool Announce(DWORD dwReason) const
    {
        const Image image(m_hModule);
        auto* const pEntryPoint = image.At<BOOL WINAPI(HINSTANCE, DWORD, void*)>(image.Header().AddressOfEntryPoint);
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
    m_library = std::make_unique<Mapped>(L"ZELK_NM.DLL", true);
    injector::Watch(m_library->Handle());
    injector::Continue();
    m_bLoaded = m_library->Announce(DLL_PROCESS_ATTACH);
    injector::Pause();
    m_operations = std::make_unique<Mapped>(L"fault_operations.dll", false);
    m_operations->Announce(DLL_PROCESS_ATTACH);
    m_pCall = reinterpret_cast<decltype(m_pCall)>(
        reinterpret_cast<void*>(::GetProcAddress(m_operations->Handle(), "CallOperation")));
}

void Library::LoadState()
{
    m_hState = ::LoadLibraryW(L"ZELK_STATE.DLL");
    m_hStateOperations = ::LoadLibraryW(L"fault_state_operations.dll");
    for (const Import& import : Image(m_hState).ImportSlots())
        import.Redirect(injector::Thunk(import.pszFunction, import.Target()));
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
