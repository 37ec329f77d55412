#include "paired.h"

#include <algorithm>
#include <chrono>

namespace
{

double Microseconds(const std::function<void(int)>& run, int repetitions)
{
    const auto begin = std::chrono::steady_clock::now();
    run(repetitions);
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    return time.count() / repetitions;
}

double Quantile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

} // namespace

Result Measure(const Comparison& comparison, int rounds)
{
    comparison.ours(1);
    comparison.peer(1);
    std::vector<double> ours;
    std::vector<double> peer;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round)
    {
        const bool bOursFirst = round % 2 == 0;
        if (bOursFirst)
            ours.push_back(Microseconds(comparison.ours, comparison.repetitions));
        peer.push_back(Microseconds(comparison.peer, comparison.repetitions));
        if (!bOursFirst)
            ours.push_back(Microseconds(comparison.ours, comparison.repetitions));
        ratios.push_back(ours.back() / peer.back());
    }
    return {Quantile(ours, 0.5), Quantile(peer, 0.5), Quantile(ratios, 0.5), Quantile(ratios, 0.25),
            Quantile(ratios, 0.75)};
}
