#include "process_comparison.h"

#include <stdexcept>
#include <string>

#include <winsock2.h>

#include <windows.h>

namespace
{

constexpr double MOST_OF_BARE_PROCESS = 1.5;
constexpr double MOST_OF_SHOW = 1.1;

/// Beside this program.
std::wstring PathOf(const wchar_t* name)
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring text = path;
    return text.substr(0, text.rfind(L'\\') + 1) + name;
}

HANDLE Open(const std::wstring& path, DWORD how)
{
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    return ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                         how, 0, nullptr);
}

/// Runs the program to its end. Without a handle for it, what it prints goes nowhere.
void Run(std::wstring command, HANDLE output = nullptr)
{
    static const HANDLE null = Open(L"NUL", OPEN_EXISTING);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = startup.hStdError = null;
    startup.hStdOutput = output != nullptr ? output : null;
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
        throw std::runtime_error("a program does not start");
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 1;
    ::GetExitCodeProcess(process.hProcess, &code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    if (code != 0)
        throw std::runtime_error("a program failed");
}

std::function<void(int)> Runs(const std::wstring& command)
{
    return [command](int repetitions) {
        for (int i = 0; i < repetitions; ++i)
            Run(command);
    };
}

std::wstring Zelkctl(const std::wstring& arguments)
{
    return L'"' + PathOf(L"..\\bin\\zelkctl.exe") + L"\" " + arguments;
}

} // namespace

Comparison AdapterListProcess(std::size_t count)
{
    return {"zelkctl adapter list, " + std::to_string(count) + " / bare program", Runs(Zelkctl(L"adapter list")),
            Runs(L'"' + PathOf(L"bare_reading.exe") + L'"'), 1, MOST_OF_BARE_PROCESS};
}

Comparison ApplyNothingProcess(std::size_t count)
{
    const std::wstring file = PathOf(L"exported.json");
    const HANDLE output = Open(file, CREATE_ALWAYS);
    Run(Zelkctl(L"export"), output);
    ::CloseHandle(output);
    return {"zelkctl apply of nothing, " + std::to_string(count) + " / show", Runs(Zelkctl(L"apply \"" + file + L'"')),
            Runs(Zelkctl(L"show")), 1, MOST_OF_SHOW};
}
