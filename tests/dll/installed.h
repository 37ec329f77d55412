#pragma once

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/trace_file.h>

#include <windows.h>

/// A copy of a program under a name of its own, in a directory of its own, with a Windows of its own.
class Installed
{
public:
    Installed(const wchar_t* pszProgram, const wchar_t* pszWindows)
        : m_sName(L"zelk_" + std::to_wstring(::GetCurrentProcessId()) + L"_" + pszWindows + L"_" + pszProgram),
          m_sSettings(L"Software\\Wine\\AppDefaults\\" + m_sName)
    {
        std::filesystem::copy_file(testing_support::BesideProgram(L"probe") / pszProgram, m_folder / m_sName);
        std::filesystem::create_directory(m_folder / L"Logfiles");
        EXPECT_EQ(0, ::RegSetKeyValueW(HKEY_CURRENT_USER, m_sSettings.c_str(), L"Version", REG_SZ, pszWindows,
                                       static_cast<DWORD>((std::wcslen(pszWindows) + 1) * sizeof(wchar_t))));
    }
    Installed(const Installed&) = delete;
    Installed& operator=(const Installed&) = delete;
    ~Installed() { ::RegDeleteTreeW(HKEY_CURRENT_USER, m_sSettings.c_str()); }

    /// Gives it the library, tracing everything.
    void AddLibrary() const
    {
        std::filesystem::copy_file(testing_support::BesideProgram(L"ZELK_NM.DLL"), Folder() / L"ZELK_NM.DLL");
        testing_support::WriteFileBytes(Folder() / L"trace.ini", "[Main]\r\nTOLVA_TraceLevel=4\r\n");
    }
    [[nodiscard]] const std::filesystem::path& Folder() const noexcept { return m_folder.Path(); }
    [[nodiscard]] std::vector<std::string> Trace() const
    {
        // Without the construction of a trace file: that would empty it.
        std::vector<std::string> lines;
        std::istringstream text(testing_support::ReadFileBytes(Folder() / L"Logfiles" / L"TOLVA_trace.log"));
        for (std::string sLine; std::getline(text, sLine);)
            lines.push_back(testing_support::NormalisedLine(sLine.substr(0, sLine.find('\r'))));
        return lines;
    }

    /// Runs it to its end and returns what it answers.
    [[nodiscard]] std::string Run() const
    {
        constexpr DWORD PATIENCE_MS = 60000;
        std::wstring sCommand = L"\"" + (m_folder / m_sName).wstring() + L"\" answer.txt";
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process = {};
        if (!::CreateProcessW(nullptr, sCommand.data(), nullptr, nullptr, FALSE, 0, nullptr, Folder().c_str(), &startup,
                              &process))
            return "did not start";
        if (::WaitForSingleObject(process.hProcess, PATIENCE_MS) != WAIT_OBJECT_0)
            ::TerminateProcess(process.hProcess, 99);
        DWORD dwExitCode = 99;
        ::GetExitCodeProcess(process.hProcess, &dwExitCode);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
        return dwExitCode == 0 ? testing_support::ReadFileBytes(Folder() / L"answer.txt")
                               : "exit code " + std::to_string(dwExitCode);
    }

private:
    testing_support::TempDirectory m_folder;
    std::wstring m_sName;
    std::wstring m_sSettings;
};
