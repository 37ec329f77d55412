#include <support/image.h>

#include <algorithm>
#include <cctype>
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

} // namespace

std::set<std::string> Image::Exports() const
{
    const auto* pExports = Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
    EXPECT_EQ(pExports->NumberOfNames, pExports->NumberOfFunctions);
    std::set<std::string> names;
    for (DWORD i = 0; i < pExports->NumberOfNames; ++i)
        names.insert(At<char>(At<DWORD>(pExports->AddressOfNames)[i]));
    return names;
}

std::set<std::string> Image::Imports() const
{
    std::set<std::string> imports;
    for (const auto* p = Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT); p->FirstThunk != 0; ++p)
    {
        std::string sDll = At<char>(p->Name);
        std::ranges::transform(sDll, sDll.begin(), [](char c) { return static_cast<char>(std::toupper(c)); });
        for (const auto* pName = At<IMAGE_THUNK_DATA64>(p->OriginalFirstThunk); pName->u1.Ordinal != 0; ++pName)
        {
            const bool bByOrdinal = IMAGE_SNAP_BY_ORDINAL64(pName->u1.Ordinal);
            imports.insert(sDll + ' ' +
                           (bByOrdinal ? "by ordinal"
                                       : At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(pName->u1.AddressOfData))->Name));
        }
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
