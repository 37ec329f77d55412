#include <state/apply/command_limit.h>

#include <algorithm>
#include <utility>
#include <vector>

#include <winsock2.h>

#include <windows.h>

#include <tlhelp32.h>

#include <state/platform/handles.h>

namespace zelk
{
namespace
{

using Clock = std::chrono::steady_clock;

/// This process, then all that stand below it.
std::vector<DWORD> ProcessesBelow()
{
    std::vector<DWORD> processes = {::GetCurrentProcessId()};
    const HANDLE taken = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (taken == INVALID_HANDLE_VALUE)
        return processes;
    const UniqueHandle snapshot(taken);
    std::vector<std::pair<DWORD, DWORD>> all; // process and parent
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL more = ::Process32FirstW(taken, &entry); more; more = ::Process32NextW(taken, &entry))
        all.emplace_back(entry.th32ProcessID, entry.th32ParentProcessID);
    for (std::size_t i = 0; i < processes.size(); ++i)
        for (const auto& [process, parent] : all)
            if (parent == processes[i] && std::ranges::find(processes, process) == processes.end())
                processes.push_back(process);
    return processes;
}

std::uint64_t StartOf(HANDLE process)
{
    FILETIME start = {}, others = {};
    if (!::GetProcessTimes(process, &start, &others, &others, &others))
        return 0;
    return std::uint64_t{start.dwHighDateTime} << 32 | start.dwLowDateTime;
}

/// One that is older than this process is not below it: its parent had the same number.
void EndCommands()
{
    constexpr DWORD RIGHTS = PROCESS_TERMINATE | PROCESS_QUERY_INFORMATION;
    const std::uint64_t own = StartOf(::GetCurrentProcess());
    for (const DWORD process : ProcessesBelow())
        if (const UniqueHandle handle{::OpenProcess(RIGHTS, FALSE, process)};
            handle && process != ::GetCurrentProcessId() && StartOf(handle.get()) >= own)
            ::TerminateProcess(handle.get(), ERROR_TIMEOUT);
}

} // namespace

CommandLimit::CommandLimit(std::chrono::milliseconds timeout, std::function<bool()> isCancelled)
    : m_watch([this, timeout, asked = std::move(isCancelled)] { Watch(timeout, asked); })
{
}

CommandLimit::~CommandLimit()
{
    {
        const std::lock_guard lock(m_mutex);
        m_left = true;
    }
    m_changed.notify_all();
    m_watch.join();
}

bool CommandLimit::IsOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_over;
}

/// One command can follow another: each is ended until the operation is left.
void CommandLimit::Watch(std::chrono::milliseconds timeout, const std::function<bool()>& isCancelled)
{
    constexpr std::chrono::milliseconds INTERVAL(100);
    const auto end = Clock::now() + timeout;
    std::unique_lock lock(m_mutex);
    while (!m_changed.wait_for(lock, INTERVAL, [this] { return m_left; }))
    {
        m_over = Clock::now() >= end;
        if (m_over || (isCancelled && isCancelled()))
            EndCommands();
    }
}

} // namespace zelk
