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
    // The trace file's directory has another key, "Logfiles", and another default, so that the logs can be kept apart.
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

        // GetTempPath does not look whether the directory is there. Where it cannot be made the next call fails and
        // tells why.
        if (!::PathIsDirectoryW(wszTempPath))
            ::CreateDirectoryW(wszTempPath, nullptr);

        // It uses three letters of the prefix, and with the number 0 it makes the file, so that the name stays ours.
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
