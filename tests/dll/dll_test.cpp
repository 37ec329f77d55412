// The DLL as its callers get it.

#include <filesystem>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/resources.h>
#include <support/trace_file.h>
#include <zelk_nm/tolva.h>

using namespace testing_support;

namespace
{

TEST(Dll, VersionIsThatOfItsResource)
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

TEST(Dll, EveryLoadMovesTheTraceAsideAndEveryUnloadLeavesNothing)
{
    const TraceFile trace;
    // A copy is a module of its own, so it is really loaded and unloaded here; its trace file is this program's.
    const TempDirectory folder;
    const std::filesystem::path copy = folder / L"other_name.dll";
    std::filesystem::copy_file(BesideProgram(L"ZELK_NM.DLL"), copy);
    const std::filesystem::path old = trace.Directory() / L"TOLVA_trace.old";
    unsigned int uiHandles = 0;
    for (const char* pszMark : {"first", "second", "third"})
    {
        SCOPED_TRACE(pszMark);
        WriteFileBytes(trace.Path(), pszMark);
        const HMODULE hCopy = ::LoadLibraryW(copy.c_str());
        ASSERT_NE(nullptr, hCopy);
        EXPECT_EQ("", trace.Bytes());
        EXPECT_EQ(pszMark, ReadFileBytes(old));
        EXPECT_TRUE(::FreeLibrary(hCopy));
        EXPECT_EQ(nullptr, ::GetModuleHandleW(L"other_name.dll"));
        // The first load opens some of the platform's own handles for good.
        const unsigned int uiNow = CountHandles();
        if (pszMark == std::string("third"))
        {
            EXPECT_EQ(uiHandles, uiNow);
        }
        uiHandles = uiNow;
    }
    std::filesystem::remove(old);
}

} // namespace
