// The library in long use. Arguments: what is to be done, the seed (nothing here is random) and the seconds (0: all).
//   soak     every reading operation 10,000 times, every changing one 2,000 times: what the process holds stays the
//   same threads  all operations from 8 threads at once for a minute: each answers what it answers one thread

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <thread>

#include <support/trace_file.h>
#include <torture/steps.h>

#include "holdings.h"
#include "operations.h"

using namespace testing_support;
using namespace torture;

namespace
{

void Soak(const std::vector<Operation>& operations, const char* what, int rounds, const Budget& budget, double part)
{
    constexpr int WARM = 100;
    const TOLVA::NIC_INFO adapter = MakeAdapters().at(0);
    const TraceFile trace;
    std::map<std::string, std::string> answers;
    Holdings before = {};
    int round = 0;
    for (; round < rounds && (round <= WARM || !budget.Over(part)); ++round)
    {
        if (round == WARM)
            before = Held();
        if (round % 100 == 0)
            trace.Empty();
        for (const Operation& operation : operations)
        {
            std::string answer = operation.run(adapter);
            const auto [known, isNew] = answers.try_emplace(operation.name, answer);
            Check(known->second == answer, std::string(operation.name) + " answered " + known->second +
                                               " first, and in round " + std::to_string(round) + ' ' + answer);
        }
    }
    const Holdings after = Held();
    Figure((std::string(what) + ": operations").c_str(), operations.size());
    Figure((std::string(what) + ": of them succeed").c_str(),
           std::ranges::count_if(answers, [](const auto& answer) { return answer.second.starts_with("true"); }));
    Figure((std::string(what) + ": rounds").c_str(), round);
    CheckSame(before, after, what);
}

void Soak(const Budget& budget)
{
    Soak(ReadingOperations(), "readings", 10000, budget, 0.7);
    Soak(ChangingOperations(), "changes", 2000, budget, 1);
}

/// What one thread is answered. Of two adapters one is read while the other is changed.
struct Use
{
    Operation operation;
    TOLVA::NIC_INFO adapter;
    std::string answer = operation.run(adapter);
};

std::vector<Use> UsesOfEverything()
{
    const std::vector<TOLVA::NIC_INFO> adapters = MakeAdapters();
    std::vector<Use> uses;
    for (const Operation& operation : ChangingOperations())
        uses.push_back({operation, adapters[1]});
    for (const Operation& operation : ReadingOperations())
        uses.push_back({operation, adapters[0]});
    return uses;
}

void UseFromThreads(const Budget& budget)
{
    const std::vector<Use> uses = UsesOfEverything();
    const auto end = std::chrono::steady_clock::now() + (budget.Whole() ? std::chrono::seconds(60) : budget.Seconds());
    std::atomic<unsigned long> calls = 0;
    std::mutex mutex;
    std::string wrong;
    {
        std::vector<std::jthread> threads;
        for (unsigned int thread = 0; thread < 8; ++thread)
            threads.emplace_back([&, thread] {
                for (std::size_t i = thread; std::chrono::steady_clock::now() < end; ++i, ++calls)
                {
                    const Use& use = uses[i % uses.size()];
                    const std::string answer = use.operation.run(use.adapter);
                    if (answer == use.answer)
                        continue;
                    const std::scoped_lock lock(mutex);
                    wrong += std::string(use.operation.name) + ": " + answer + " instead of " + use.answer + '\n';
                }
            });
    }
    Figure("operations", uses.size());
    Figure("calls from 8 threads", calls);
    Check(wrong.empty(), wrong);
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const Budget budget(argc - 1, argv + 1);
    const std::wstring_view what = argc > 1 ? argv[1] : L"";
    Check(what == L"soak" || what == L"threads", "usage: endurance soak|threads SEED SECONDS");
    what == L"soak" ? Soak(budget) : UseFromThreads(budget);
    return 0;
}
