#pragma once

#include <set>
#include <string>
#include <vector>

#include <winsock2.h>

#include <windows.h>

namespace testing_support
{

/// What a module imports, and the slot through which it is called. Slots are copied byte by byte because a linker may
/// lay import tables out on four bytes, not eight.
struct Import
{
    const char* pszDll;
    const char* pszFunction; ///< null where it is imported by ordinal
    void* pSlot;

    [[nodiscard]] void* Target() const;
    void Redirect(void* pTarget) const;
};

/// A module that the program has loaded, read as the loader reads it.
class Image
{
public:
    explicit Image(HMODULE hModule) : m_hModule(hModule) {}
    explicit Image(const wchar_t* pszDll) : m_hModule(::GetModuleHandleW(pszDll)) {}

    [[nodiscard]] const IMAGE_OPTIONAL_HEADER64& Header() const
    {
        return At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew))->OptionalHeader;
    }
    template <class T>
    T* At(DWORD dwOffset) const
    {
        return reinterpret_cast<T*>(reinterpret_cast<char*>(m_hModule) + dwOffset);
    }
    template <class T>
    const T* Directory(unsigned int uiEntry) const
    {
        return At<T>(Header().DataDirectory[uiEntry].VirtualAddress);
    }

    /// The names of all exports, of which none has an ordinal alone.
    [[nodiscard]] std::set<std::string> Exports() const;
    [[nodiscard]] std::vector<Import> ImportSlots() const;
    /// As "MODULE.DLL Function".
    [[nodiscard]] std::set<std::string> Imports() const;
    /// Of the imports, those that Windows 5.2 for x64, the oldest system that has to load it, does not have for all
    /// that is known; and whether the image asks for a newer system by itself.
    [[nodiscard]] std::set<std::string> ImportsOfNewerSystems() const;
    [[nodiscard]] bool IsForTheOldestSystem() const;

private:
    HMODULE m_hModule;
};

} // namespace testing_support
