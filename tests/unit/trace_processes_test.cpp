#include <memory>
#include <set>
#include <thread>

#include <winsock2.h>

#include <shellapi.h>
#include <windows.h>

#include <support/files.h>
#include <support/trace/trace.h>
#include <support/trace_file.h>

#include <gmock/gmock.h>

using namespace testing_support;

namespace
{

constexpr int PROCESSES = 8;
constexpr int THREADS = 4;
constexpr int LINES = 60;
constexpr DWORD PATIENCE_MS = 30000;

const wchar_t* const READY = L"zelk_writers_ready";
const wchar_t* const GO = L"zelk_writers_go";

struct CloseIt
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, CloseIt>;

std::string LineOf(int process, int thread, int line)
{
    // Of changing length, so that a torn line cannot look whole.
    return std::to_string(process) + '.' + std::to_string(thread) + '.' + std::to_string(line) +
           std::string(static_cast<std::size_t>(line % 17), '#');
}

/// What a writer process does: `arguments` are its number and the log directory.
int WriteLines(wchar_t** arguments)
{
    const int process = std::stoi(arguments[0]);
    TheTrace.SetLogDirectory(arguments[1]);
    const Handle ready(::OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, READY));
    const Handle go(::OpenEventW(SYNCHRONIZE, FALSE, GO));
    ::ReleaseSemaphore(ready.get(), 1, nullptr);
    if (::WaitForSingleObject(go.get(), PATIENCE_MS) != WAIT_OBJECT_0)
        return 1;

    std::vector<std::jthread> threads;
    for (int thread = 0; thread < THREADS; ++thread)
        threads.emplace_back([=] {
            for (int line = 0; line < LINES; ++line)
                TheTrace.Trace(TRACE_ERROR, "Writer", LineOf(process, thread, line).c_str());
        });
    threads.clear();
    return 0;
}

Handle StartWriter(int process, const std::wstring& sFolder)
{
    wchar_t program[1024];
    ::GetModuleFileNameW(nullptr, program, std::size(program));
    std::wstring sCommand =
        L'"' + std::wstring(program) + L"\" --write-lines " + std::to_wstring(process) + L" \"" + sFolder + L'"';
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    PROCESS_INFORMATION made = {};
    EXPECT_TRUE(
        ::CreateProcessW(program, sCommand.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &made));
    ::CloseHandle(made.hThread);
    return Handle(made.hProcess);
}

TEST(TraceProcesses, ShareOneLogWithoutLoss)
{
    const TempDirectory folder;
    const TraceFile log(folder.Path());
    const Handle ready(::CreateSemaphoreW(nullptr, 0, PROCESSES, READY));
    const Handle go(::CreateEventW(nullptr, TRUE, FALSE, GO));
    std::vector<Handle> processes;
    std::multiset<std::string> missing;
    for (int process = 0; process < PROCESSES; ++process)
    {
        processes.push_back(StartWriter(process, folder.Text()));
        for (int thread = 0; thread < THREADS; ++thread)
            for (int line = 0; line < LINES; ++line)
                missing.insert("[E] Writer : " + LineOf(process, thread, line));
    }
    // Loading moves the log away, so nobody starts before everybody has loaded.
    for (int process = 0; process < PROCESSES; ++process)
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(ready.get(), PATIENCE_MS));
    ::SetEvent(go.get());
    for (const Handle& process : processes)
    {
        DWORD dwExitCode = 99;
        if (::WaitForSingleObject(process.get(), PATIENCE_MS) != WAIT_OBJECT_0)
            ::TerminateProcess(process.get(), 98);
        ::GetExitCodeProcess(process.get(), &dwExitCode);
        EXPECT_EQ(0U, dwExitCode);
    }
    std::vector<std::string> torn;
    for (const std::string& sLine : log.Lines())
        if (const auto found = missing.find(sLine); found != missing.end())
            missing.erase(found);
        else
            torn.push_back(sLine);
    EXPECT_THAT(torn, testing::IsEmpty());
    EXPECT_THAT(missing, testing::IsEmpty());
}

} // namespace

int main(int argc, char** argv)
{
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (count == 4 && std::wstring_view(arguments[1]) == L"--write-lines")
        return WriteLines(arguments + 2);
    ::LocalFree(arguments);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
