#include "system/own_process.h"

#include <winsock2.h>

#include <windows.h>

#include <shlwapi.h>

#include "system/failure.h"
#include "system/unique_handle.h"

namespace zelkctl
{
namespace
{

struct Pipe
{
    UniqueHandle read;
    UniqueHandle write; ///< handed on to the child
};

Pipe MakePipe()
{
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE hRead = nullptr;
    HANDLE hWrite = nullptr;
    if (!::CreatePipe(&hRead, &hWrite, &inheritable, 0))
        throw Failure({.sReason = "no pipe could be made"});
    ::SetHandleInformation(hRead, HANDLE_FLAG_INHERIT, 0);
    return {UniqueHandle(hRead), UniqueHandle(hWrite)};
}

/// The command line need not name the program in full.
std::wstring OwnPath()
{
    constexpr DWORD LONGEST_PATH = 32768;
    std::wstring sPath(LONGEST_PATH, L'\0');
    sPath.resize(::GetModuleFileNameW(nullptr, sPath.data(), LONGEST_PATH));
    return sPath;
}

void Start(std::wstring sCommandLine, HANDLE hOutput)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = hOutput;
    startup.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(OwnPath().c_str(), sCommandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                          &process))
        throw Failure({.sReason = "the tool could not be started once more"});
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
}

} // namespace

std::string RunOnceMore(const std::wstring& sArgument)
{
    Pipe pipe = MakePipe();
    Start(L"zelkctl " + sArgument + L' ' + ::PathGetArgsW(::GetCommandLineW()), pipe.write.get());
    pipe.write.reset(); // so that the end of the child is the end of what is read
    std::string text;
    char buffer[4096];
    DWORD dwRead = 0;
    while (::ReadFile(pipe.read.get(), buffer, sizeof(buffer), &dwRead, nullptr) && dwRead > 0)
        text.append(buffer, dwRead);
    return text;
}

} // namespace zelkctl
