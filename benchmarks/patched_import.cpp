#include "patched_import.h"

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>

namespace
{

template <class T>
T* At(std::uintptr_t offset)
{
    return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(::GetModuleHandleW(nullptr)) + offset);
}

void** FindSlot(const IMAGE_IMPORT_DESCRIPTOR& imports, const char* pszFunction)
{
    const auto* pName = At<const IMAGE_THUNK_DATA>(imports.OriginalFirstThunk);
    for (auto** pSlot = At<void*>(imports.FirstThunk); *pSlot != nullptr; ++pSlot, ++pName)
    {
        const bool bNamed = !IMAGE_SNAP_BY_ORDINAL(pName->u1.Ordinal);
        if (bNamed && std::strcmp(At<IMAGE_IMPORT_BY_NAME>(pName->u1.AddressOfData)->Name, pszFunction) == 0)
            return pSlot;
    }
    return nullptr;
}

void** FindSlot(const char* pszFunction)
{
    const auto* pHeaders =
        At<const IMAGE_NT_HEADERS>(static_cast<std::uintptr_t>(At<const IMAGE_DOS_HEADER>(0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY& imports = pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    for (const auto* p = At<const IMAGE_IMPORT_DESCRIPTOR>(imports.VirtualAddress); p->FirstThunk != 0; ++p)
        if (void** pSlot = FindSlot(*p, pszFunction))
            return pSlot;
    throw std::runtime_error(std::string(pszFunction) + " is not imported");
}

void Write(void** pSlot, void* pValue)
{
    DWORD dwProtection = 0;
    ::VirtualProtect(pSlot, sizeof(*pSlot), PAGE_READWRITE, &dwProtection);
    *pSlot = pValue;
    ::VirtualProtect(pSlot, sizeof(*pSlot), dwProtection, &dwProtection);
}

} // namespace

PatchedImport::PatchedImport(const char* pszFunction, void* pReplacement)
    : m_pSlot(FindSlot(pszFunction)), m_pOriginal(*m_pSlot)
{
    Write(m_pSlot, pReplacement);
}

PatchedImport::~PatchedImport()
{
    Write(m_pSlot, m_pOriginal);
}
