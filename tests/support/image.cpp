#include <support/image.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <sstream>

#include <gtest/gtest.h>

#include <support/files.h>

namespace testing_support
{
namespace
{

/// Every function that a DLL may import. All of these exist on the oldest system; what a newer one brings is looked up
/// at run time. Add a function only after checking that.
std::set<std::string> ImportsOfTheOldestSystem()
{
    std::istringstream text(ReadFileBytes(BesideProgram(L"golden/dll/imports_of_the_oldest_system.txt")));
    std::set<std::string> imports;
    for (std::string sLine; std::getline(text, sLine);)
        imports.insert(sLine);
    return imports;
}

template <class T>
T CopyOf(const T* pSource)
{
    T value;
    std::memcpy(&value, pSource, sizeof(value));
    return value;
}

} // namespace

void* Import::Target() const
{
    return CopyOf(static_cast<void* const*>(pSlot));
}

void Import::Redirect(void* pTarget) const
{
    DWORD dwProtection = 0;
    ::VirtualProtect(pSlot, sizeof(pTarget), PAGE_READWRITE, &dwProtection);
    std::memcpy(pSlot, &pTarget, sizeof(pTarget));
    ::VirtualProtect(pSlot, sizeof(pTarget), dwProtection, &dwProtection);
}

std::set<std::string> Image::Exports() const
{
    const auto* pExports = Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
    EXPECT_EQ(pExports->NumberOfNames, pExports->NumberOfFunctions);
    std::set<std::string> names;
    for (DWORD i = 0; i < pExports->NumberOfNames; ++i)
        names.insert(At<char>(At<DWORD>(pExports->AddressOfNames)[i]));
    return names;
}

std::vector<Import> Image::ImportSlots() const
{
    std::vector<Import> imports;
    for (const auto* p = Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT); p->FirstThunk != 0; ++p)
    {
        IMAGE_THUNK_DATA64 import;
        for (DWORD at = 0; import = CopyOf(At<IMAGE_THUNK_DATA64>(p->OriginalFirstThunk + at)), import.u1.Ordinal != 0;
             at += sizeof(import))
        {
            constexpr DWORD NAME = offsetof(IMAGE_IMPORT_BY_NAME, Name);
            const bool bByOrdinal = IMAGE_SNAP_BY_ORDINAL64(import.u1.Ordinal);
            imports.push_back({At<char>(p->Name),
                               bByOrdinal ? nullptr : At<char>(static_cast<DWORD>(import.u1.AddressOfData) + NAME),
                               At<void>(p->FirstThunk + at)});
        }
    }
    return imports;
}

std::set<std::string> Image::Imports() const
{
    std::set<std::string> imports;
    for (const Import& import : ImportSlots())
    {
        std::string sDll = import.pszDll;
        std::ranges::transform(sDll, sDll.begin(), [](char c) { return static_cast<char>(std::toupper(c)); });
        imports.insert(sDll + ' ' + (import.pszFunction != nullptr ? import.pszFunction : "by ordinal"));
    }
    return imports;
}

std::set<std::string> Image::ImportsOfNewerSystems() const
{
    const auto imports = Imports();
    const auto allowed = ImportsOfTheOldestSystem();
    std::set<std::string> others;
    std::ranges::set_difference(imports, allowed, std::inserter(others, others.end()));
    return others;
}

bool Image::IsForTheOldestSystem() const
{
    const IMAGE_OPTIONAL_HEADER64& header = Header();
    return MAKELONG(header.MinorSubsystemVersion, header.MajorSubsystemVersion) <= MAKELONG(2, 5) &&
           MAKELONG(header.MinorOperatingSystemVersion, header.MajorOperatingSystemVersion) <= MAKELONG(2, 5) &&
           header.DataDirectory[IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT].Size == 0;
}

} // namespace testing_support
