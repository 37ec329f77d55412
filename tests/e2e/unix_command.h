#pragma once

#include <string>

#include <support/files.h>

#include <windows.h>

/// Runs a command of the system that Wine runs on, in the same network namespace. True when it succeeded; `sOutput` is
/// what it wrote. It may hold no double quotes. Such a process cannot be waited on: it ends by renaming its exit code
/// into place, in a folder on the drive that is the Unix root.
inline bool RunUnix(const std::string& sCommand, std::string& sOutput,
                    const std::filesystem::path& folder = testing_support::BesideProgram(L""))
{
    constexpr ULONGLONG PATIENCE_MS = 10000;
    const std::string sUnix = folder.generic_string().substr(2) + "/unix-" + std::to_string(::GetCurrentProcessId());
    const std::filesystem::path done = "Z:" + sUnix + ".done";
    std::string sLine = "sh -c \"PATH=/usr/sbin:/usr/bin:/sbin:/bin; (" + sCommand + ") >" + sUnix +
                        ".out 2>&1; echo $? >" + sUnix + ".code; mv " + sUnix + ".code " + sUnix + ".done\"";
    STARTUPINFOA startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessA("Z:\\bin\\sh", sLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &process))
        return false;
    // Nothing is closed: of such a process Wine fills in no handles, and what stands there may be anybody's.
    const ULONGLONG ullEnd = ::GetTickCount64() + PATIENCE_MS;
    while (!std::filesystem::exists(done) && ::GetTickCount64() < ullEnd)
        ::Sleep(1);
    sOutput = testing_support::ReadFileBytes("Z:" + sUnix + ".out");
    const bool bDone = testing_support::ReadFileBytes(done) == "0\n";
    std::filesystem::remove(done);
    std::filesystem::remove("Z:" + sUnix + ".out");
    return bDone;
}

/// Interrupts, as Ctrl+C does, what runs of the program beside this one.
inline bool InterruptProgram(const std::string& sName)
{
    std::string sPath = testing_support::BesideProgram(L"").generic_string() + sName;
    sPath.insert(sPath.size() - 1, "[").append("]"); // the shell's own line is another
    std::string sOutput;
    return RunUnix("for p in /proc/[0-9]*; do tr '\\\\' / <$p/cmdline | grep -qa '" + sPath +
                       "' && kill -INT ${p#/proc/}; done; true",
                   sOutput);
}
