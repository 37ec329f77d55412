#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <support/files.h>
#include <support/trace_file.h>

#include <process.h>
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
    ~Installed() { ::RegDeleteTreeW(HKEY_CURRENT_USER, m_sSettings.c_str()); }

    /// Gives it the library, tracing everything.
    void AddLibrary() const
    {
        std::filesystem::copy_file(testing_support::BesideProgram(L"ZELK_NM.DLL"), Folder() / L"ZELK_NM.DLL");
        testing_support::WriteFileBytes(Folder() / L"trace.ini", "[Main]\r\nTOLVA_TraceLevel=4\r\n");
    }
    [[nodiscard]] const std::filesystem::path& Folder() const noexcept { return m_folder.Path(); }
    /// Without the construction of a trace file: that would empty it.
    [[nodiscard]] std::vector<std::string> Trace() const
    {
        return testing_support::LinesOf(Folder() / L"Logfiles" / L"TOLVA_trace.log");
    }

    /// Runs it to its end and returns what it answers.
    [[nodiscard]] std::string Run() const
    {
        const auto Quoted = [](const std::filesystem::path& path) { return L'"' + path.wstring() + L'"'; };
        const std::filesystem::path program = m_folder / m_sName, answer = m_folder / L"answer.txt";
        const std::intptr_t code =
            ::_wspawnl(_P_WAIT, program.c_str(), Quoted(program).c_str(), Quoted(answer).c_str(), nullptr);
        return code == 0 ? testing_support::ReadFileBytes(answer) : "exit code " + std::to_string(code);
    }

private:
    testing_support::TempDirectory m_folder;
    std::wstring m_sName;
    std::wstring m_sSettings;
};
