#include <iterator>

#include <shlwapi.h>

#include <support/platform/module_path.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

bool TOLVA::GetOwnDir(velmor::string& sDir)
try
{
    velmor::string sPath;
    DWORD dwLastError = ERROR_SUCCESS;
    if (!velmor::GetModulePath(nullptr, sPath, dwLastError))
        return false;
    sDir = velmor::DirectoryOf(sPath);
    return true;
}
catch (...)
{
    return CallFrame::WithoutStart("TOLVA::GetOwnDir").FailUnforeseen();
}

bool TOLVA::GetLogDir(velmor::string& sDir)
try
{
    velmor::string sOwnDir;
    if (!GetOwnDir(sOwnDir))
        return false;
    // Key and default differ from those of the trace file's directory. That is meant: the two logs can be kept apart.
    sDir = velmor::ReadProfileText(L"File Locations", L"Log Files", L"X:\\Program Files\\Velmor\\ZELK\\Logfiles",
                                   sOwnDir + L"\\zlk.ini");
    return true;
}
catch (...)
{
    return CallFrame::WithoutStart("TOLVA::GetLogDir").FailUnforeseen();
}

bool TOLVA::GetTempFilename(velmor::string& sFilename)
{
    return RunOperation("TOLVA::GetTempFilename", [&](const CallFrame& frame) {
        constexpr DWORD PATH_SIZE = 260;
        wchar_t wszTempPath[PATH_SIZE];
        const DWORD length = ::GetTempPathW(PATH_SIZE, wszTempPath);
        if (length == 0 || length > PATH_SIZE)
            return frame.Fail("GetTempPath() failed", "dwLastError", ::GetLastError());
        frame.Verbose("wszTempPath", wszTempPath);

        // Where this fails, so does the next call, and tells why.
        if (!::PathIsDirectoryW(wszTempPath))
            ::CreateDirectoryW(wszTempPath, nullptr);

        wchar_t wszTempFilename[PATH_SIZE];
        if (::GetTempFileNameW(wszTempPath, L"TOLVA", 0, wszTempFilename) == 0)
            return frame.Fail("GetTempFileName() failed", "dwLastError", ::GetLastError());
        frame.Verbose("wszTempFilename", wszTempFilename);
        try
        {
            sFilename = wszTempFilename;
        }
        catch (...)
        {
            ::DeleteFileW(wszTempFilename); // nobody would own it
            throw;
        }
        return frame.Succeed();
    });
}
