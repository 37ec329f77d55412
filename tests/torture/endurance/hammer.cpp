// The trace under writers of several processes and threads: nothing is lost, torn or out of order. The same without the
// mutex has to fail, or the proof is none. Arguments: seed (unused: nothing here is random) and seconds (0: all lines).

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <winsock2.h>

#include <process.h>
#include <windows.h>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/platform/handles.h>
#include <support/trace/trace.h>
#include <support/trace_file.h>
#include <torture/steps.h>

using namespace testing_support;
using namespace torture;
using Handle = velmor::UniqueToken;

namespace
{

constexpr int PROCESSES = 8;
constexpr int THREADS = 4;
constexpr DWORD PATIENCE_MS = 600000;

const wchar_t* const READY = L"zelk_writers_ready";
const wchar_t* const GO = L"zelk_writers_go";

std::string WriterOf(int process, int thread)
{
    return std::to_string(process) + '.' + std::to_string(thread);
}

/// Of changing length, so that a torn line cannot look whole.
std::string LineOf(const std::string& writer, int line)
{
    return writer + ':' + std::to_string(line) + std::string(static_cast<std::size_t>(line % 17), '#');
}

/// While it lives, every thread believes that it holds the mutex.
struct WithoutMutex
{
    decltype(PatchWait([](DWORD) { return WAIT_OBJECT_0; })) wait = PatchWait([](DWORD) { return WAIT_OBJECT_0; });
    ImportPatch<decltype(&::ReleaseMutex)> release{"ReleaseMutex", [](HANDLE) -> BOOL { return TRUE; }};
};

/// What a writer's process does: `arguments` are its number, the number of lines, the log directory, and "mutex" or
/// not.
int WriteLines(wchar_t** arguments)
{
    const int process = std::stoi(arguments[0]);
    const int lines = std::stoi(arguments[1]);
    TheTrace.SetLogDirectory(arguments[2]);
    const Handle ready(::OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, READY));
    const Handle go(::OpenEventW(SYNCHRONIZE, FALSE, GO));
    ::ReleaseSemaphore(ready.Get(), 1, nullptr);
    if (::WaitForSingleObject(go.Get(), PATIENCE_MS) != WAIT_OBJECT_0)
        return 1;
    std::optional<WithoutMutex> withoutMutex;
    if (arguments[3] != std::wstring_view(L"mutex"))
        withoutMutex.emplace();
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < THREADS; ++thread)
        threads.emplace_back([=] {
            for (int line = 0; line < lines; ++line)
                TheTrace.Trace(TRACE_ERROR, "Writer", LineOf(WriterOf(process, thread), line).c_str());
        });
    threads.clear();
    return 0;
}

Handle StartWriter(int process, int lines, const std::wstring& folder, bool mutex)
{
    const std::intptr_t started =
        ::_wspawnl(_P_NOWAIT, _wpgmptr, L"writer", L"--write-lines", std::to_wstring(process).c_str(),
                   std::to_wstring(lines).c_str(), (L'"' + folder + L'"').c_str(), mutex ? L"mutex" : L"none", nullptr);
    Check(started != -1, "a writer could not be started");
    return Handle(reinterpret_cast<HANDLE>(started));
}

/// Loading the library moves the log away, so nobody begins before everybody has loaded.
void RunWriters(int lines, const std::wstring& folder, bool mutex)
{
    const Handle ready(::CreateSemaphoreW(nullptr, 0, PROCESSES, READY));
    const Handle go(::CreateEventW(nullptr, TRUE, FALSE, GO));
    std::vector<Handle> processes;
    for (int process = 0; process < PROCESSES; ++process)
        processes.push_back(StartWriter(process, lines, folder, mutex));
    for (int process = 0; process < PROCESSES; ++process)
        Check(::WaitForSingleObject(ready.Get(), PATIENCE_MS) == WAIT_OBJECT_0, "a writer was not ready in time");
    ::SetEvent(go.Get());
    for (const Handle& process : processes)
    {
        DWORD exitCode = 99;
        Check(::WaitForSingleObject(process.Get(), PATIENCE_MS) == WAIT_OBJECT_0, "a writer did not end");
        ::GetExitCodeProcess(process.Get(), &exitCode);
        Check(exitCode == 0, "a writer failed");
    }
}

/// Of how many lines the file does not hold each once, whole, and behind those that its thread wrote before it.
int CountWrong(const TraceFile& log, int lines)
{
    int right = 0;
    int foreign = 0;
    std::map<std::string, int> next;
    const std::string prefix = "[E] Writer : ";
    for (const std::string& line : log.Lines())
    {
        const std::string text = line.starts_with(prefix) ? line.substr(prefix.size()) : "";
        const std::size_t colon = std::min(text.find(':'), text.size());
        const std::string writer = text.substr(0, colon);
        const int number = std::atoi(text.c_str() + std::min(colon + 1, text.size()));
        const bool expected = text == LineOf(writer, number) && number >= next[writer];
        ++(expected ? right : foreign);
        if (expected)
            next[writer] = number + 1;
    }
    return std::max(PROCESSES * THREADS * lines - right, foreign);
}

int Hammer(int lines, bool mutex)
{
    const TempDirectory folder;
    const TraceFile log(folder.Path());
    RunWriters(lines, folder.Text(), mutex);
    return CountWrong(log, lines);
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc == 6 && std::wstring_view(argv[1]) == L"--write-lines")
        return WriteLines(argv + 2);
    const int lines = TimeFor(argc, argv).count() == 0 ? 2000 : 150;
    const auto begin = std::chrono::steady_clock::now();
    const int wrong = Hammer(lines, true);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    const int wrongWithout = Hammer(lines, false);
    Figure("lines of 8 processes with 4 threads each", PROCESSES * THREADS * lines);
    Figure("lines a second", static_cast<int>(PROCESSES * THREADS * lines / time.count()));
    Figure("lines lost, torn or out of order", wrong);
    Figure("the same without the mutex", wrongWithout);
    Check(wrong == 0, "lines were lost, torn or out of order");
    Check(wrongWithout != 0, "nothing was lost without the mutex either, so the writers did not contend");
    return 0;
}
