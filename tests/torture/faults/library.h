#pragma once

#include <memory>

#include "operations.h"

/// The library under test, with thunks in its import slots, and what calls its operations.
class Library
{
public:
    /// Loads it, with the calls of its entry point counted. ZELK_STATE.DLL is loaded by the system, uncounted.
    explicit Library(bool bState);
    ~Library(); ///< counts those of its unloading too

    [[nodiscard]] bool IsLoaded() const noexcept { return m_bLoaded; }
    /// Its operation's name. False when there is none with that number.
    bool Name(unsigned int uiOperation, Answer& answer) { return m_pCall(uiOperation, L"", nullptr, answer); }
    /// Calls an operation, counted or not; uncounted ones also from several threads. False when there is none with that
    /// number.
    bool Call(unsigned int uiOperation, bool bNewThread, bool bCounted, Answer& answer);

private:
    class Mapped;
    void LoadState();
    struct Request;
    static DWORD WINAPI Run(void* pRequest);

    std::unique_ptr<Mapped> m_library, m_operations;
    HMODULE m_hState = nullptr, m_hStateOperations = nullptr;
    bool m_bLoaded = false;
    decltype(&CallOperation) m_pCall = nullptr;
};
