#include <support/import_patch.h>

#include <cstring>

#include <gtest/gtest.h>

/// Put at the program's start by the linker; asking the platform would go through a table that may be patched.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace testing_support
{

ImportSlots::ImportSlots(HMODULE hModule, const char* pszFunction, void* pReplacement)
{
    const Image module(hModule != nullptr ? hModule : reinterpret_cast<HMODULE>(&__ImageBase));
    for (const Import& import : module.ImportSlots())
        if (import.pszFunction != nullptr && std::strcmp(import.pszFunction, pszFunction) == 0)
            m_slots.push_back(import);
    if (m_slots.empty())
    {
        ADD_FAILURE() << pszFunction << " is not imported, so it cannot be replaced";
        return;
    }
    m_pOriginal = m_slots.front().Target();
    for (const Import& import : m_slots)
        import.Redirect(pReplacement);
}

ImportSlots::~ImportSlots()
{
    for (const Import& import : m_slots)
        import.Redirect(m_pOriginal);
}

} // namespace testing_support
