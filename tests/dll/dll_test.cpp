// The DLL as its callers get it.

#include <filesystem>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/resources.h>
#include <support/trace_file.h>
#include <zelk_nm/tolva.h>

using namespace testing_support;

namespace
{

HMODULE Library()
{
    return ::GetModuleHandleW(L"ZELK_NM.DLL");
}

/// Everything is traced.
class Dll : public testing::Test
{
protected:
    Dll() : settings(BesideProgram(L"trace.ini"), "[Main]\r\nTOLVA_TraceLevel=4\r\n")
    {
        TOLVA();
        trace.Empty();
    }

    TraceFile trace;
    IniFile settings;
};

TEST_F(Dll, AFailingPlatformCallShowsInTheTrace)
{
    TOLVA::NIC_INFO NicInfo;
    NicInfo.sNicGuid = L"{X}";
    {
        const auto patch = PATCH_IMPORT(
            GetInterfaceInfo, [](auto...) -> DWORD { return ERROR_NOT_SUPPORTED; }, Library());
        std::vector<TOLVA::NIC_INFO> list = {NicInfo};
        EXPECT_FALSE(TOLVA::GetAdapterList(list));
        EXPECT_EQ(1U, list.size());
    }
    {
        const auto index = PATCH_IMPORT(
            GetAdapterIndex, [](auto...) -> DWORD { return NO_ERROR; }, Library());
        const auto patch = PATCH_IMPORT(
            GetAdaptersAddresses, [](auto...) -> ULONG { return ERROR_ADDRESS_NOT_ASSOCIATED; }, Library());
        TOLVA::TOLVA_OPER_STATUS enStatus;
        EXPECT_FALSE(TOLVA::GetAdapterOperStatus(NicInfo, enStatus));
    }
    trace.ExpectLines({
        "[V] TOLVA::GetAdapterList : starting ...",
        "[V] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : starting ...",
        "[V] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : starting ...",
        "[E] TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable : ... ending( GetInterfaceInfo failed ) : dwRc = 50",
        "[E] TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList : ... ending( Failed to load adapter table )",
        "[E] TOLVA::GetAdapterList : ... ending(Failed to get adapter list)",
        "[V] TOLVA::GetAdapterOperStatus : starting ...",
        "[V] TOLVA::GetAdapterIndex : starting ...",
        "[V] TOLVA::GetAdapterIndex : NicInfo.sNicGuid = \"{X}\"",
        "[V] TOLVA::GetAdapterIndex : ulAdapterIndex = 0",
        "[V] TOLVA::GetAdapterIndex : ... ending",
        "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus : starting ...",
        "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus : ulIndex = 0",
        "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : starting ...",
        "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : IPv4 and IPv6",
        "[E] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : ... ending( GetAdaptersAddresses failed ) : ulRc = 1228",
        "[E] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus : "
        "... ending( Failed to load IP_ADAPTER_ADDRESSES table )",
        "[E] TOLVA::GetAdapterOperStatus : ... ending( Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus() failed )",
    });
}

TEST_F(Dll, VersionIsThatOfItsResource)
{
    wchar_t path[MAX_PATH];
    ASSERT_NE(0U, ::GetModuleFileNameW(Library(), path, std::size(path)));
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

TEST_F(Dll, EveryLoadMovesTheTraceAsideAndEveryUnloadLeavesNothing)
{
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
