// What the file ZELK_NM.DLL asks of the system that loads it, and what it offers.

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include <gmock/gmock.h>

#include <support/files.h>
#include <zelk_nm/tolva.h>

namespace
{

/// Every function that the DLL may import, as "MODULE.DLL Function". All of these exist on Windows 5.2 for x64, the
/// oldest system that has to load it; what a newer system brings is looked up at run time. Add a function only after
/// checking that.
std::set<std::string> ImportsOfTheOldestSystem()
{
    std::istringstream text(
        testing_support::ReadFileBytes(testing_support::BesideProgram(L"golden/dll/imports_of_the_oldest_system.txt")));
    std::set<std::string> imports;
    for (std::string sLine; std::getline(text, sLine);)
        imports.insert(sLine);
    return imports;
}

/// The loaded DLL, read as the loader reads it.
class Image
{
public:
    [[nodiscard]] const IMAGE_OPTIONAL_HEADER64& Header() const
    {
        return At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew))->OptionalHeader;
    }
    template <class T>
    const T* At(DWORD dwOffset) const
    {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(m_hModule) + dwOffset);
    }
    template <class T>
    const T* Directory(unsigned int uiEntry) const
    {
        return At<T>(Header().DataDirectory[uiEntry].VirtualAddress);
    }

private:
    HMODULE m_hModule = ::GetModuleHandleW(L"ZELK_NM.DLL");
};

TEST(DllImage, ImportsOnlyWhatTheOldestSystemHas)
{
#ifndef NDEBUG
    GTEST_SKIP() << "other builds than the release build carry parts of the compiler that are not shipped";
#endif
    const Image image;
    const std::set<std::string> allowed = ImportsOfTheOldestSystem();
    unsigned int count = 0;
    for (const auto* p = image.Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT); p->FirstThunk != 0;
         ++p)
    {
        std::string sDll = image.At<char>(p->Name);
        std::transform(sDll.begin(), sDll.end(), sDll.begin(),
                       [](char c) { return static_cast<char>(std::toupper(c)); });
        for (const auto* pName = image.At<IMAGE_THUNK_DATA64>(p->OriginalFirstThunk); pName->u1.Ordinal != 0; ++pName)
        {
            ASSERT_FALSE(IMAGE_SNAP_BY_ORDINAL64(pName->u1.Ordinal)) << sDll;
            const char* pszName = image.At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(pName->u1.AddressOfData))->Name;
            EXPECT_TRUE(allowed.contains(sDll + ' ' + pszName)) << sDll << ' ' << pszName;
            ++count;
        }
    }
    EXPECT_GT(count, 50U);
    EXPECT_LT(std::filesystem::file_size(testing_support::BesideProgram(L"ZELK_NM.DLL")), 300U * 1024)
        << "too large for a boot image";
    EXPECT_EQ(0U, image.Header().DataDirectory[IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT].Size);
    EXPECT_EQ(0U, image.Header().DataDirectory[IMAGE_DIRECTORY_ENTRY_TLS].Size)
        << "with thread callbacks the system goes on announcing threads";
    EXPECT_LE(MAKELONG(image.Header().MinorSubsystemVersion, image.Header().MajorSubsystemVersion), MAKELONG(2, 5));
    EXPECT_LE(MAKELONG(image.Header().MinorOperatingSystemVersion, image.Header().MajorOperatingSystemVersion),
              MAKELONG(2, 5));
}

TEST(DllImage, ExportsTheFacadeAndItsTypesOnly)
{
    const Image image;
    const auto* pExports = image.Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
    EXPECT_STREQ("ZELK_NM.DLL", image.At<char>(pExports->Name));
    EXPECT_EQ(pExports->NumberOfNames, pExports->NumberOfFunctions);
    std::set<std::string> names;
    for (DWORD i = 0; i < pExports->NumberOfNames; ++i)
        names.insert(image.At<char>(image.At<DWORD>(pExports->AddressOfNames)[i]));
    const std::regex own("_ZNK?(5TOLVA|6velmor)(?!.*Wrap_)\\w+|_ZT[VIS]N6velmor\\w+");
    for (const std::string& sName : names)
        EXPECT_TRUE(std::regex_match(sName, own)) << sName;
    EXPECT_THAT(names, testing::IsSupersetOf({"_ZN5TOLVAC1Ev", "_ZN5TOLVAD1Ev", "_ZN5TOLVAaSERKS_",
                                              "_ZN5TOLVA20NIC_DEVICECLASS_GUIDE", "_ZN5TOLVA16HARDWARE_ADDRESSC1Ev",
                                              "_ZTVN6velmor10ip_addressE"}));
}

/// The comparisons take references, which no optimisation of this program folds away.
TEST(DllImage, ConstantsBindToReferences)
{
    EXPECT_EQ(velmor::string::npos, velmor::string(L"abc").find(L'd'));
    EXPECT_EQ(velmor::ip_address::INVALID_FAMILY, velmor::ip_address(velmor::string()).family());
    EXPECT_EQ(TOLVA::HARDWARE_ADDRESS::MAX_BYTES, TOLVA::HARDWARE_ADDRESS(L"1-2-3-4-5-6-7-8").size());
}

TEST(DllImage, VersionIsThatOfItsResource)
{
    wchar_t path[MAX_PATH];
    ASSERT_NE(0U, ::GetModuleFileNameW(::GetModuleHandleW(L"ZELK_NM.DLL"), path, std::size(path)));
    std::vector<BYTE> resource(::GetFileVersionInfoSizeW(path, nullptr));
    ASSERT_TRUE(::GetFileVersionInfoW(path, 0, static_cast<DWORD>(resource.size()), resource.data()));
    VS_FIXEDFILEINFO* pFixed = nullptr;
    UINT size = 0;
    ASSERT_TRUE(::VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&pFixed), &size));
    const std::wstring sNumbers = std::to_wstring(HIWORD(pFixed->dwFileVersionMS)) + L'.' +
                                  std::to_wstring(LOWORD(pFixed->dwFileVersionMS)) + L'.' +
                                  std::to_wstring(HIWORD(pFixed->dwFileVersionLS)) + L'.' +
                                  std::to_wstring(LOWORD(pFixed->dwFileVersionLS));
    velmor::string sVersion;
    EXPECT_EQ(0U, TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, sVersion));
    EXPECT_EQ(sNumbers, sVersion.c_str());
}

} // namespace
