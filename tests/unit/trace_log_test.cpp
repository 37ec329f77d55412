#include <winsock2.h>

#include <shlwapi.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/traced.h>

#include "fake_windows.h"

using namespace testing_support;
using velmor::string;

namespace
{

using TraceLog = Traced;

string PathOf(const std::filesystem::path& path)
{
    return string(path.wstring());
}

/// A second trace log, as a library that is loaded now would have it.
class SecondLog : public CTrace
{
public:
    SecondLog() : CTrace(L"TOLVA_trace.log", L"TOLVA_TraceLevel", 7) {}

    string LogDirectory()
    {
        string sDir;
        GetLogDirectory(sDir);
        return sDir;
    }
    string ModuleDirectory()
    {
        string sDir;
        GetModuleDirectory(sDir);
        return sDir;
    }
};

TEST_F(TraceLog, LevelSettings)
{
    for (const unsigned int setting : {0U, 1U, 2U, 3U, 4U, 5U, 99U, 0xFFFFFFFFU})
    {
        TheTrace.SetTraceLevel(setting);
        trace.Empty();
        for (unsigned int level = 1; level <= 8; level *= 2)
            TheTrace.Trace(level, "A", "b");
        TheTrace.TraceBanner("ab");
        golden->Line("setting", setting, "mask", TheTrace.GetTraceMask());
        golden->Lines(trace.Lines());
    }
    EXPECT_EQ(7U, SecondLog().GetTraceMask());
}

TEST_F(TraceLog, LevelFromTheSettingsFile)
{
    for (const char* pszContent :
         {"[Main]\nTOLVA_TraceLevel=0", "[Main]\nTOLVA_TraceLevel=2", "[Main]\nTOLVA_TraceLevel=4",
          "[Main]\nTOLVA_TraceLevel=5", "[Main]\nTOLVA_TraceLevel=-1", "[Main]\nTOLVA_TraceLevel=verbose",
          "[Main]\nOther=1", "[Other]\nTOLVA_TraceLevel=1", "no settings"})
    {
        TheTrace.SetTraceLevel(3);
        const IniFile settings(BesideProgram(L"trace.ini"), pszContent);
        TheTrace.ReadTraceLevel();
        golden->Line(pszContent, "gives", TheTrace.GetTraceMask());
    }
    TheTrace.SetTraceLevel(1);
    TheTrace.ReadTraceLevel();
    EXPECT_EQ(1U, TheTrace.GetTraceMask()) << "without a file";
}

TEST_F(TraceLog, NothingIsWrittenWithoutTheMutexOrTheFile)
{
    for (const auto& [dwResult, bOpens] : {std::pair<DWORD, bool>(WAIT_OBJECT_0, true),
                                           {WAIT_OBJECT_0, false},
                                           {WAIT_TIMEOUT, true},
                                           {WAIT_ABANDONED, true},
                                           {WAIT_FAILED, true}})
    {
        trace.Empty();
        std::string sCalls;
        {
            const auto wait = PatchWait([&, dwResult = dwResult](DWORD dwTime) {
                sCalls += Show("wait", dwTime, "");
                return dwResult;
            });
            const auto release = PATCH_IMPORT(ReleaseMutex, [&](HANDLE) -> BOOL {
                sCalls += "release ";
                return TRUE;
            });
            ImportPatches file;
            if (!bOpens)
                ADD_PATCH(file, CreateFileW, [](auto...) { return INVALID_HANDLE_VALUE; });
            TheTrace.Trace(TRACE_ERROR, "A", "b");
            TheTrace.TraceBanner("c");
            golden->Line("== waiting gives", dwResult, "opens", bOpens, "cleared", TheTrace.ClearLog());
            TheTrace.TraceVar(TRACE_ERROR, "A", "b", true);
        }
        golden->Line(sCalls);
        golden->Lines(trace.Lines());
    }
}

TEST_F(TraceLog, ALogWithoutAMutexIsSilent)
{
    const auto create = PATCH_IMPORT(CreateMutexW, [](SECURITY_ATTRIBUTES*, BOOL bOwned, const wchar_t*) -> HANDLE {
        EXPECT_FALSE(bOwned);
        return nullptr;
    });
    SecondLog log;
    log.Trace(TRACE_ERROR, "A", "b");
    log.TraceBanner("A");
    EXPECT_FALSE(log.ClearLog());
    EXPECT_EQ("", trace.Bytes());
}

/// In the golden text: after each step the mask, the directory that is reported and what both files hold.
TEST_F(TraceLog, DirectoryIsChangedAndReset)
{
    const TempDirectory folder;
    const TraceFile other(folder.Path());
    const string sMissing = PathOf(folder / L"missing"), sOther = PathOf(folder.Path());
    string sFirst, sNow;
    TheTrace.GetLogDirectory(sFirst);
    EXPECT_EQ(PathOf(trace.Directory()), sFirst);
    const std::pair<const char*, std::function<bool()>> steps[] = {
        {"to a missing one", [&] { return TheTrace.SetLogDirectory(sMissing); }},
        {"to another one", [&] { return TheTrace.SetLogDirectory(sOther); }},
        {"and back", [&] { return TheTrace.SetLogDirectory(sFirst); }},
        {"reset without a directory", [] { return TheTrace.ResetLog(L"", 0), true; }},
        {"reset", [&] { return TheTrace.ResetLog(sOther, 2), true; }},
        {"cleared", [] { return TheTrace.ClearLog(); }},
        {"reset to a missing one", [&] { return TheTrace.ResetLog(sMissing, 4), true; }},
        {"cleared", [] { return TheTrace.ClearLog(); }},
        {"to the first one", [&] { return TheTrace.SetLogDirectory(sFirst); }}};
    for (const auto& [pszTitle, run] : steps)
    {
        const bool bRc = run();
        const bool bEmpty = std::filesystem::exists(other.Path()) && other.Bytes().empty();
        TheTrace.GetLogDirectory(sNow);
        golden->Line("==", pszTitle, bRc, "mask", TheTrace.GetTraceMask(), "now", sNow == sFirst, sNow == sOther,
                     "the other is there, and empty:", bEmpty);
        TheTrace.Trace(TRACE_ERROR, "A", pszTitle);
        golden->Lines(trace.Lines());
        golden->Lines(other.Lines());
    }
    EXPECT_FALSE(std::filesystem::exists(folder / L"missing"));
}

TEST_F(TraceLog, RotationAtLoad)
{
    const TempDirectory folder;
    const auto log = folder / L"TOLVA_trace.log", old = folder / L"TOLVA_trace.old";
    const IniFile settings(BesideProgram(L"zlk.ini"), "[File Locations]\r\nLogfiles=" + folder.Path().string());
    WriteFileBytes(old, "oldest");
    EXPECT_EQ(PathOf(folder.Path()), SecondLog().LogDirectory());
    EXPECT_EQ("oldest", ReadFileBytes(old)) << "nothing to rotate";

    WriteFileBytes(log, "first");
    {
        // A log in use neither holds up the load nor keeps it from rotating.
        const auto wait = PatchWait([](DWORD dwTime) -> DWORD {
            EXPECT_EQ(0U, dwTime);
            return WAIT_TIMEOUT;
        });
        const SecondLog busy;
    }
    SecondLog().Trace(TRACE_ERROR, "A", "b");
    EXPECT_EQ("first", ReadFileBytes(old));
    EXPECT_EQ("[E] A : b", NormalisedLine(ReadFileBytes(log)).substr(0, 9));

    WriteFileBytes(log, "second");
    {
        const auto copy = PATCH_IMPORT(CopyFileW, [](auto...) -> BOOL { return FALSE; });
        const SecondLog third;
    }
    EXPECT_FALSE(std::filesystem::exists(log)) << "whatever the copy answered";

    for (const auto& [pszName, pszBackup] : {std::pair(L"plain", L"plain.old"), std::pair(L"a.b.log", L"a.b.old")})
    {
        WriteFileBytes(folder / pszName, "x");
        const CTrace named(pszName, L"key", 7);
        EXPECT_EQ("x", ReadFileBytes(folder / pszBackup));
        EXPECT_FALSE(std::filesystem::exists(folder / pszName));
    }
}

TEST_F(TraceLog, MiniNTOfTheOldKernelHasItsFilesOnZ)
{
    // The directory is settled before the environment is known, so only a log that has found none yet goes to Z:.
    FakeWindows windows(5, 2, 1);
    FakeWindows::Set(FakeWindows::MININT_KEY);
    std::vector<std::wstring> answers = {L"", L"", L"Y:\\set"}; // an empty directory is asked for again
    std::vector<std::wstring> read;
    const auto text = PATCH_IMPORT(GetPrivateProfileStringW,
                                   [&](const wchar_t*, const wchar_t*, const wchar_t* pszDefault, wchar_t* pszText,
                                       DWORD, const wchar_t* pszFile) -> DWORD {
                                       read.push_back(pszDefault + std::wstring(L"|") + pszFile);
                                       std::wcscpy(pszText, answers.at(read.size() - 1).c_str());
                                       return static_cast<DWORD>(std::wcslen(pszText));
                                   });
    const auto number =
        PATCH_IMPORT(GetPrivateProfileIntW, [&](const wchar_t*, const wchar_t*, INT, const wchar_t* pszFile) -> UINT {
            read.emplace_back(pszFile);
            return 0;
        });
    SecondLog log;
    EXPECT_EQ(16U, GetWindowsEnvironment());
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(string(L"Y:\\set"), log.LogDirectory());
    log.ReadTraceLevel();
    EXPECT_EQ(0U, log.GetTraceMask());
    const std::wstring sSettings = L'|' + BesideProgram(L"zlk.ini").wstring();
    EXPECT_THAT(read, testing::ElementsAre(trace.Directory().wstring() + sSettings,
                                           L'|' + BesideProgram(L"prodspec.ini").wstring(), // of the edition
                                           L"Z:\\ZELK\\Logfiles" + sSettings, L"Z:\\ZELK\\trace.ini"));
}

/// GetModuleFileNameW for a program at `sPath`, with the quirk of the systems since Vista or of those before: both cut
/// a path that does not fit, only the newer ones end it and say so. None clears the last error on success.
auto ProgramAt(const std::wstring& sPath, bool bVista, int& calls)
{
    return PATCH_IMPORT(GetModuleFileNameW, [=, &calls](HMODULE, wchar_t* pszText, DWORD dwSize) -> DWORD {
        EXPECT_EQ(260U * static_cast<DWORD>(++calls), dwSize);
        const bool bFits = sPath.size() < dwSize;
        const std::size_t length = bFits ? sPath.size() : dwSize;
        sPath.copy(pszText, length);
        if (bFits)
            pszText[length] = L'\0';
        else if (bVista)
        {
            pszText[length - 1] = L'\0';
            ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        }
        return static_cast<DWORD>(length);
    });
}

TEST_F(TraceLog, ProgramPathsAroundTheSizeOfTheBuffer)
{
    SecondLog log;
    ::SetLastError(ERROR_ACCESS_DENIED); // is stale, and no failure
    EXPECT_EQ(PathOf(trace.Directory().parent_path()), log.ModuleDirectory());
    for (const bool bVista : {true, false})
        for (const std::size_t size : {20U, 259U, 260U, 261U, 519U, 520U, 779U, 3000U})
        {
            int calls = 0;
            const std::wstring sDirectory = L"P:\\" + std::wstring(size - 9, L'd');
            const auto patch = ProgramAt(sDirectory + L"\\p.exe", bVista, calls);
            ::SetLastError(ERROR_ACCESS_DENIED);
            EXPECT_EQ(string(sDirectory), log.ModuleDirectory()) << size << ' ' << bVista;
            EXPECT_EQ(static_cast<int>(size / 260) + 1, calls) << size;
        }
    for (const auto& [dwLength, dwError] : {std::pair<DWORD, DWORD>(0, ERROR_ACCESS_DENIED),
                                            {0, ERROR_SUCCESS},
                                            {0, ERROR_INSUFFICIENT_BUFFER},
                                            {3, ERROR_ACCESS_DENIED},
                                            {0x10000, ERROR_INSUFFICIENT_BUFFER}}) // fits into no buffer
    {
        const auto patch = PATCH_IMPORT(GetModuleFileNameW, [&](HMODULE, wchar_t* pszText, DWORD) -> DWORD {
            std::wcscpy(pszText, L"P:\\");
            ::SetLastError(dwError);
            return dwLength;
        });
        EXPECT_EQ(string(L"X:\\Program Files\\Velmor\\ZELK"), log.ModuleDirectory()) << dwError;
    }
}

} // namespace
