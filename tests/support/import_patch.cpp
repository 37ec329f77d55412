#include <support/import_patch.h>

#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

/// Put at the program's start by the linker; asking the platform would go through a table that may be patched.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace testing_support
{
namespace
{

HMODULE Program()
{
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

// Bytes are copied because a linker may lay import tables out on four bytes, not eight.

void Write(void** pSlot, void* pValue)
{
    DWORD dwProtection = 0;
    ::VirtualProtect(pSlot, sizeof(*pSlot), PAGE_READWRITE, &dwProtection);
    std::memcpy(pSlot, &pValue, sizeof(pValue));
    ::VirtualProtect(pSlot, sizeof(*pSlot), dwProtection, &dwProtection);
}

template <class T>
T* At(HMODULE hModule, DWORD dwOffset)
{
    return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(hModule) + dwOffset);
}

template <class T>
T Read(const T* pSource)
{
    T value;
    std::memcpy(&value, pSource, sizeof(value));
    return value;
}

std::vector<void**> FindSlots(HMODULE hModule, const char* pszFunction)
{
    std::vector<void**> slots;
    const auto* pDos = At<IMAGE_DOS_HEADER>(hModule, 0);
    const auto* pHeaders = At<IMAGE_NT_HEADERS>(hModule, static_cast<DWORD>(pDos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& imports = pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (const auto* p = At<IMAGE_IMPORT_DESCRIPTOR>(hModule, imports.VirtualAddress); p->FirstThunk != 0; ++p)
    {
        const auto* pName = At<IMAGE_THUNK_DATA>(hModule, p->OriginalFirstThunk);
        for (auto** pSlot = At<void*>(hModule, p->FirstThunk); Read(pSlot) != nullptr; ++pSlot, ++pName)
        {
            const ULONGLONG import = Read(pName).u1.Ordinal;
            if (IMAGE_SNAP_BY_ORDINAL(import))
                continue;
            const auto* pszName = At<char>(hModule, static_cast<DWORD>(import) + offsetof(IMAGE_IMPORT_BY_NAME, Name));
            if (std::strcmp(pszName, pszFunction) == 0)
                slots.push_back(pSlot);
        }
    }
    return slots;
}

} // namespace

ImportSlots::ImportSlots(HMODULE hModule, const char* pszFunction, void* pReplacement)
    : m_slots(FindSlots(hModule != nullptr ? hModule : Program(), pszFunction))
{
    if (m_slots.empty())
    {
        ADD_FAILURE() << pszFunction << " is not imported, so it cannot be replaced";
        return;
    }
    m_pOriginal = Read(m_slots.front());
    for (void** pSlot : m_slots)
        Write(pSlot, pReplacement);
}

ImportSlots::~ImportSlots()
{
    for (void** pSlot : m_slots)
        Write(pSlot, m_pOriginal);
}

} // namespace testing_support
