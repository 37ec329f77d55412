// The library in long use, with stand-ins for what would change this machine. Arguments: what is to be done, the seed
// (nothing here is random) and the seconds (0: all).
//   soak     every operation 10,000 times: what the process holds stays the same, and so do the answers
//   threads  all operations from 8 threads at once for a minute: each answers what it answers one thread
//   loads    a thousand times the library is loaded, used and unloaded: nothing is left

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <support/resources.h>
#include <support/trace_file.h>
#include <torture/faults/library.h>
#include <torture/faults/machine.h>
#include <torture/steps.h>

using namespace torture;

namespace
{

/// Every operation of the library, with what it answers first.
class Operations
{
public:
    Operations()
    {
        Answer answer;
        for (unsigned int i = 0; m_library.Name(i, answer) && !std::string_view(answer.name).starts_with(PLANTED); ++i)
        {
            m_names.emplace_back(answer.name);
            m_answers.push_back(Ask(i));
        }
    }

    [[nodiscard]] std::size_t Count() const noexcept { return m_names.size(); }
    void Tell() const
    {
        Figure("operations", Count());
        Figure("operations that succeed",
               std::ranges::count_if(m_answers, [](const std::string& answer) { return answer.starts_with("true"); }));
    }
    /// What is wrong with a further call; empty when it answers what it has answered first.
    std::string Repeat(std::size_t operation)
    {
        const std::string answer = Ask(static_cast<unsigned int>(operation));
        return answer == m_answers[operation]
                   ? std::string()
                   : m_names[operation] + ": " + answer + " instead of " + m_answers[operation] + '\n';
    }

private:
    std::string Ask(unsigned int operation)
    {
        Answer answer;
        m_library.Call(operation, false, false, answer);
        return std::string(answer.bException ? "exception " : answer.bResult ? "true " : "false ") + answer.text;
    }

    Library m_library{false};
    std::vector<std::string> m_names;
    std::vector<std::string> m_answers;
};

/// Of the process's own committed pages; what it maps of files does not count.
std::size_t PrivateKilobytes()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* address = nullptr; ::VirtualQuery(address, &region, sizeof(region)) != 0;
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize)
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            bytes += region.RegionSize;
    return bytes / 1024;
}

/// Does something again and again, and ends the step where it leaves anything behind. In the first rounds the platform
/// takes what it keeps from the first use.
void Repeat(const std::string& what, int rounds, int warm, std::chrono::seconds time,
            const std::function<void(int)>& run)
{
    // The heap grows in steps of its own; what is lost once in a hundred rounds is more than this.
    constexpr std::size_t HEAP_STEP_KB = 256;
    const struct
    {
        const char* name;
        std::size_t (*count)();
        std::size_t allowed;
    } holdings[] = {{"handles", [] { return std::size_t{testing_support::CountHandles()}; }, 0},
                    {"blocks", &testing_support::CountHeapBlocks, 0},
                    {"private kilobytes", &PrivateKilobytes, HEAP_STEP_KB}};
    std::size_t before[std::size(holdings)] = {}, after[std::size(holdings)] = {};
    const auto Count = [&](std::size_t* pCounts) {
        std::ranges::transform(holdings, pCounts, [](const auto& held) { return held.count(); });
    };
    const auto end = std::chrono::steady_clock::now() + time;
    const auto IsOver = [&] { return time.count() != 0 && std::chrono::steady_clock::now() >= end; };
    int round = 0;
    for (; round < rounds && (round <= warm || !IsOver()); ++round)
    {
        if (round == warm)
            Count(before);
        run(round);
    }
    Count(after);
    Figure(what.c_str(), round);
    for (std::size_t i = 0; i < std::size(holdings); ++i)
    {
        Figure((what + ": growth in " + holdings[i].name).c_str(), static_cast<long>(after[i] - before[i]));
        Check(after[i] <= before[i] + holdings[i].allowed, what + " leak " + holdings[i].name);
    }
}

void Soak(std::chrono::seconds time)
{
    Operations operations;
    operations.Tell();
    const testing_support::TraceFile trace;
    Repeat("rounds", 10000, 100, time, [&](int round) {
        if (round % 100 == 0)
            trace.Empty();
        for (std::size_t i = 0; i < operations.Count(); ++i)
        {
            const std::string wrong = operations.Repeat(i);
            Check(wrong.empty(), wrong);
        }
    });
}

/// The constructor reads the settings and the library's version, and traces.
void LoadAndUse(int)
{
    const HMODULE library = ::LoadLibraryW(L"ZELK_NM.DLL");
    Check(library != nullptr, "the library could not be loaded");
    const auto construct =
        reinterpret_cast<void (*)(void*)>(reinterpret_cast<void*>(::GetProcAddress(library, "_ZN5TOLVAC1Ev")));
    Check(construct != nullptr, "the library does not export its constructor");
    char object = 0; // the class has no data
    construct(&object);
    ::FreeLibrary(library);
    Check(::GetModuleHandleW(L"ZELK_NM.DLL") == nullptr, "the library stays loaded");
}

void UseFromThreads(std::chrono::seconds time)
{
    Operations operations;
    operations.Tell();
    const auto end = std::chrono::steady_clock::now() + (time.count() == 0 ? std::chrono::seconds(60) : time);
    std::atomic<unsigned long> calls = 0;
    std::mutex mutex;
    std::string wrong;
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < 8; ++thread)
            threads.emplace_back([&, thread] {
                for (std::size_t i = thread; std::chrono::steady_clock::now() < end; ++i, ++calls)
                    if (const std::string found = operations.Repeat(i % operations.Count()); !found.empty())
                    {
                        const std::scoped_lock lock(mutex);
                        wrong += found;
                    }
            });
    }
    Figure("calls from 8 threads", calls);
    Check(wrong.empty(), wrong);
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const auto time = TimeFor(argc - 1, argv + 1);
    const std::wstring_view what = argc > 1 ? argv[1] : L"";
    SetUpAdapter(AdapterGuid());
    if (what == L"soak")
        Soak(time);
    else if (what == L"threads")
        UseFromThreads(time);
    else
        Repeat("loads", 1000, 10, time, &LoadAndUse);
    return 0;
}
