#include "zelkctl_test.h"

#include <utility>

using namespace testing_support;

namespace
{

/// Of this process, but for the rights of an administrator where they are not wanted.
Handle Token(bool bElevated)
{
    HANDLE hToken = nullptr;
    ::OpenProcessToken(::GetCurrentProcess(), TOKEN_ALL_ACCESS, &hToken);
    Handle token(hToken);
    if (bElevated)
        return token;
    BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD dwSize = sizeof(sid);
    ::CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid, &dwSize);
    SID_AND_ATTRIBUTES administrators = {sid, 0};
    HANDLE hRestricted = nullptr;
    ::CreateRestrictedToken(hToken, 0, 1, &administrators, 0, nullptr, 0, nullptr, &hRestricted);
    return Handle(hRestricted);
}

} // namespace

Zelkctl::Zelkctl(const std::wstring& sArguments, const Start& start)
{
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE hRead = nullptr;
    HANDLE hWrite = nullptr;
    ::CreatePipe(&hRead, &hWrite, &inheritable, 0);
    // Wine closes a handle that is not its own when it starts a Unix program in the meantime.
    ::SetHandleInformation(hRead, HANDLE_FLAG_INHERIT | HANDLE_FLAG_PROTECT_FROM_CLOSE, HANDLE_FLAG_PROTECT_FROM_CLOSE);
    m_output.reset(hRead);
    const Handle write(hWrite); // closed here, so that the program's end is the pipe's
    const Handle errors(::CreateFileW((m_folder / L"errors").c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = write.get();
    startup.hStdError = errors.get();
    std::wstring sCommand = L"\"" + BesideProgram(start.pszProgram).wstring() + L"\" " + sArguments;
    PROCESS_INFORMATION process = {};
    const Handle token = Token(start.bElevated);
    if (!::CreateProcessAsUserW(token.get(), nullptr, sCommand.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                &startup, &process))
        throw std::runtime_error("zelkctl.exe did not start: error " + std::to_string(::GetLastError()));
    ::CloseHandle(process.hThread);
    m_process.reset(process.hProcess);
}

Zelkctl::~Zelkctl()
{
    ::SetHandleInformation(m_output.get(), HANDLE_FLAG_PROTECT_FROM_CLOSE, 0);
}

std::string Zelkctl::ReadUntil(const std::string& sText)
{
    while (m_sRead.find(sText) == std::string::npos)
        if (!ReadMore())
            return std::exchange(m_sRead, {});
    const std::size_t length = m_sRead.find(sText) + sText.size();
    std::string sTaken = m_sRead.substr(0, length);
    m_sRead.erase(0, length);
    return sTaken;
}

std::string Zelkctl::ReadToEnd()
{
    while (ReadMore())
        continue;
    return std::exchange(m_sRead, {});
}

void Zelkctl::Terminate()
{
    ::TerminateProcess(m_process.get(), 0);
}

DWORD Zelkctl::WaitForExitCode()
{
    DWORD dwExitCode = 0;
    ::WaitForSingleObject(m_process.get(), INFINITE);
    ::GetExitCodeProcess(m_process.get(), &dwExitCode);
    return dwExitCode;
}

std::string Zelkctl::Errors() const
{
    return ReadFileBytes(m_folder / L"errors");
}

bool Zelkctl::ReadMore()
{
    char buffer[4096];
    DWORD dwRead = 0;
    if (!::ReadFile(m_output.get(), buffer, sizeof(buffer), &dwRead, nullptr) || dwRead == 0)
        return false;
    m_sRead.append(buffer, dwRead);
    return true;
}

ZelkctlTest::Result ZelkctlTest::Run(const std::wstring& sArguments, const Start& start)
{
    Zelkctl program(sArguments, start);
    std::string sOut = program.ReadToEnd();
    const DWORD dwExitCode = program.WaitForExitCode();
    return {dwExitCode, std::move(sOut), program.Errors()};
}

std::string ZelkctlTest::Session(const std::string& sCommand, const Start& start)
{
    const std::size_t begin = std::string_view("zelkctl ").size();
    EXPECT_EQ("zelkctl ", sCommand.substr(0, begin));
    const Result result =
        Run(std::wstring(sCommand.begin() + static_cast<std::ptrdiff_t>(begin), sCommand.end()), start);
    return result.sOut + result.sErr +
           (result.dwExitCode != 0 ? "exit code " + std::to_string(result.dwExitCode) + '\n' : "");
}
