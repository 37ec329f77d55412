// The library in long use, with stand-ins for what would change this machine. Arguments: what is to be done, the seed
// (nothing here is random) and the seconds (0: all).
//   soak     every operation 10,000 times: what the process holds stays the same, and so do the answers
//   threads  all operations from 8 threads at once for a minute: each answers what it answers one thread

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <support/trace_file.h>
#include <torture/faults/library.h>
#include <torture/faults/machine.h>
#include <torture/steps.h>

#include "holdings.h"

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
    [[nodiscard]] long Succeeding() const
    {
        return static_cast<long>(
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

void Soak(Operations& operations, const Budget& budget)
{
    constexpr int ROUNDS = 10000;
    constexpr int WARM = 100;
    const testing_support::TraceFile trace;
    Holdings before = {};
    int round = 0;
    for (; round < ROUNDS && (round <= WARM || !budget.Over()); ++round)
    {
        if (round == WARM)
            before = Held();
        if (round % WARM == 0)
            trace.Empty();
        for (std::size_t i = 0; i < operations.Count(); ++i)
        {
            const std::string wrong = operations.Repeat(i);
            Check(wrong.empty(), wrong);
        }
    }
    const Holdings after = Held();
    Figure("rounds", round);
    CheckSame(before, after, "rounds");
}

void UseFromThreads(Operations& operations, const Budget& budget)
{
    const auto end = std::chrono::steady_clock::now() + (budget.Whole() ? std::chrono::seconds(60) : budget.Seconds());
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
    const Budget budget(argc - 1, argv + 1);
    const std::wstring_view what = argc > 1 ? argv[1] : L"";
    Check(what == L"soak" || what == L"threads", "usage: endurance soak|threads SEED SECONDS");
    SetUpAdapter(AdapterGuid());
    Operations operations;
    Figure("operations", operations.Count());
    Figure("of them succeed", operations.Succeeding());
    what == L"soak" ? Soak(operations, budget) : UseFromThreads(operations, budget);
    return 0;
}
