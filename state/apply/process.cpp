#include <state/apply/process.h>

#include <memory>
#include <string_view>

#include <winsock2.h>

#include <windows.h>

#include <state/apply/command_line.h>
#include <state/platform/handles.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

using Clock = std::chrono::steady_clock;

/// Both ends of a pipe for what the program writes.
struct Pipe
{
    UniqueHandle readEnd;
    UniqueHandle writeEnd;

    bool Open()
    {
        SECURITY_ATTRIBUTES inherited = {};
        inherited.nLength = sizeof(inherited);
        inherited.bInheritHandle = TRUE;
        HANDLE read = nullptr;
        HANDLE write = nullptr;
        if (!::CreatePipe(&read, &write, &inherited, 0))
            return false;
        readEnd.reset(read);
        writeEnd.reset(write);
        return ::SetHandleInformation(read, HANDLE_FLAG_INHERIT, 0) != FALSE;
    }
};

/// Empty after a failure.
std::wstring SystemDirectory()
{
    wchar_t path[MAX_PATH + 1] = {};
    const UINT length = ::GetSystemDirectoryW(path, MAX_PATH);
    return length > 0 && length < MAX_PATH ? std::wstring(path, length) : std::wstring();
}

/// The commands write in the code page of the console.
std::string Decode(const std::string& bytes)
{
    if (bytes.empty())
        return {};
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    const int length = ::MultiByteToWideChar(CP_OEMCP, 0, bytes.data(), size, text.data(), size);
    text.resize(static_cast<std::size_t>(length));
    return ToUtf8(text);
}

/// One running program and all that it starts.
class Process
{
public:
    ~Process()
    {
        if (m_process && !m_ended)
            End();
    }

    bool Start(std::wstring line, const std::wstring& path, const std::wstring& directory, ProcessResult& result)
    {
        if (!m_pipe.Open())
            return Fail(result, "CreatePipe");
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = m_pipe.writeEnd.get();
        startup.hStdError = m_pipe.writeEnd.get();
        PROCESS_INFORMATION started = {};
        constexpr DWORD FLAGS = CREATE_NO_WINDOW | CREATE_SUSPENDED;
        if (!::CreateProcessW(path.c_str(), line.data(), nullptr, nullptr, TRUE, FLAGS, nullptr, directory.c_str(),
                              &startup, &started))
            return Fail(result, "CreateProcess");
        m_process.reset(started.hProcess);
        const UniqueHandle thread(started.hThread);
        m_pipe.writeEnd.reset(); // what is read ends with the program's own handle
        PutIntoJob();
        if (::ResumeThread(thread.get()) == static_cast<DWORD>(-1))
            return Fail(result, "ResumeThread");
        return true;
    }

    void Wait(std::chrono::milliseconds timeout, const std::function<bool()>& isCancelled, ProcessResult& result)
    {
        constexpr DWORD INTERVAL_MS = 20;
        const auto end = Clock::now() + timeout;
        while (::WaitForSingleObject(m_process.get(), INTERVAL_MS) == WAIT_TIMEOUT)
        {
            Drain();
            result.timedOut = Clock::now() >= end;
            result.cancelled = !result.timedOut && isCancelled && isCancelled();
            if (result.timedOut || result.cancelled)
                return End();
        }
        m_ended = true;
        Drain();
        DWORD code = 0;
        if (::GetExitCodeProcess(m_process.get(), &code))
            result.exitCode = code;
        else
            Fail(result, "GetExitCodeProcess");
    }

    [[nodiscard]] std::string Output() const { return Decode(m_output); }

private:
    static bool Fail(ProcessResult& result, const char* function)
    {
        result.error = ::GetLastError();
        result.function = function;
        return false;
    }

    /// A command that outlived this process could change the machine after the previous state has been restored, so it
    /// ends with the job, which ends with this process. Without a job, as where an older system has put this process
    /// into one already, only the program itself can be ended.
    void PutIntoJob()
    {
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        m_job.reset(::CreateJobObjectW(nullptr, nullptr));
        if (m_job)
            ::SetInformationJobObject(m_job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
        if (m_job && !::AssignProcessToJobObject(m_job.get(), m_process.get()))
            m_job.reset();
    }

    void End()
    {
        constexpr DWORD PATIENCE_MS = 5000;
        constexpr UINT EXIT_CODE = ERROR_TIMEOUT;
        if (!m_job || !::TerminateJobObject(m_job.get(), EXIT_CODE))
            ::TerminateProcess(m_process.get(), EXIT_CODE);
        ::WaitForSingleObject(m_process.get(), PATIENCE_MS);
        m_ended = true;
    }

    /// Reads what is there and keeps its beginning, so that the program never waits for a reader.
    void Drain()
    {
        constexpr std::size_t KEPT = 65536;
        char buffer[4096];
        DWORD available = 0;
        DWORD count = 0;
        std::size_t total = 0;
        while (total < KEPT && ::PeekNamedPipe(m_pipe.readEnd.get(), nullptr, 0, nullptr, &available, nullptr) &&
               available > 0 && ::ReadFile(m_pipe.readEnd.get(), buffer, sizeof(buffer), &count, nullptr))
        {
            total += count;
            m_output.append(buffer, std::min<std::size_t>(count, KEPT - m_output.size()));
        }
    }

    Pipe m_pipe;
    UniqueHandle m_job;
    UniqueHandle m_process;
    bool m_ended = false;
    std::string m_output;
};

/// Of a program of the system's directory, to its end.
ProcessResult Run(const std::wstring& directory, const std::wstring& file, const std::vector<std::wstring>& arguments,
                  std::chrono::milliseconds timeout, const std::function<bool()>& isCancelled)
{
    ProcessResult result;
    const std::wstring path = directory + L'\\' + file;
    Process process;
    if (process.Start(MakeCommandLine(path, arguments), path, directory, result))
        process.Wait(timeout, isCancelled, result);
    result.output = process.Output();
    return result;
}

/// Whether the system could not start the program or not load what it needs, so that nothing of it has run.
bool HasNotBegun(const ProcessResult& result)
{
    constexpr std::uint32_t DLL_INIT_FAILED = 0xC0000142;
    return result.exitCode ? *result.exitCode == DLL_INIT_FAILED : std::string_view(result.function) == "CreateProcess";
}

} // namespace

ProcessResult RunSystemProgram(const std::wstring& file, const std::vector<std::wstring>& arguments,
                               std::chrono::milliseconds timeout, const std::function<bool()>& isCancelled)
{
    const std::wstring directory = SystemDirectory();
    if (directory.empty())
    {
        ProcessResult result;
        result.error = ::GetLastError();
        result.function = "GetSystemDirectory";
        return result;
    }
    ProcessResult result = Run(directory, file, arguments, timeout, isCancelled);
    if (HasNotBegun(result)) // a system under load may lack something for a moment only
        result = Run(directory, file, arguments, timeout, isCancelled);
    return result;
}

} // namespace zelk
