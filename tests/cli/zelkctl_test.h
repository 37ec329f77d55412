#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <support/files.h>

#include <windows.h>

struct CloseIt
{
    void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseIt>;

/// How zelkctl is started: its copy beside the tests, with the tests' own rights.
struct Start
{
    const wchar_t* pszProgram = L"zelkctl.exe";
    bool bElevated = true; ///< or as one who is no administrator
};

/// zelkctl as a shell starts it: the real program.
class Zelkctl
{
public:
    /// The arguments are as on a command line.
    explicit Zelkctl(const std::wstring& sArguments, const Start& start = {});
    Zelkctl(const Zelkctl&) = delete;
    Zelkctl& operator=(const Zelkctl&) = delete;
    ~Zelkctl();

    /// Its standard output from the last call up to and with `sText`, or to its end if that never comes.
    std::string ReadUntil(const std::string& sText);
    std::string ReadToEnd();
    void Terminate();
    DWORD WaitForExitCode();
    /// Its error output, after its end.
    [[nodiscard]] std::string Errors() const;

private:
    bool ReadMore();

    testing_support::TempDirectory m_folder; ///< of its error output
    Handle m_output;
    Handle m_process;
    std::string m_sRead;
};

class ZelkctlTest : public testing::Test
{
protected:
    struct Result
    {
        DWORD dwExitCode;
        std::string sOut;
        std::string sErr;
    };
    static Result Run(const std::wstring& sArguments, const Start& start = {});
    /// What a user sees of "zelkctl ARGUMENTS": both outputs, and an exit code that is not 0.
    static std::string Session(const std::string& sCommand, const Start& start = {});
};
