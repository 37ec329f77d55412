#pragma once

#include <winsock2.h>

#include <windows.h>

/// Points the program's own calls of one imported function elsewhere for as long as it lives.
class PatchedImport
{
public:
    /// Throws std::runtime_error when the program does not import the function.
    template <class Function>
    PatchedImport(const char* pszFunction, Function* pReplacement)
        : PatchedImport(pszFunction, reinterpret_cast<void*>(pReplacement))
    {
    }
    PatchedImport(const char* pszFunction, void* pReplacement);
    PatchedImport(const PatchedImport&) = delete;
    PatchedImport& operator=(const PatchedImport&) = delete;
    ~PatchedImport();

private:
    void** m_pSlot;
    void* m_pOriginal;
};
