#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>

#include "comparisons.h"

namespace
{

constexpr int DEFAULT_ROUNDS = 41;
constexpr long MOST_ROUNDS = 10000;

bool MeasureAndPrint(const Comparison& comparison, int rounds)
{
    const Result result = Measure(comparison, rounds);
    const bool bGood = result.ratio <= comparison.target;
    std::printf("%-42s %12.4f %12.4f %7.3f  %5.3f-%5.3f  %6.2f  %s\n", comparison.sWhat.c_str(),
                result.oursMicroseconds, result.peerMicroseconds, result.ratio, result.ratioLow, result.ratioHigh,
                comparison.target, bGood ? "yes" : "NO");
    std::fflush(stdout);
    return bGood;
}

} // namespace

int main(int argc, char** argv)
try
{
    const long asked = argc > 1 ? std::strtol(argv[1], nullptr, 10) : DEFAULT_ROUNDS;
    if (asked < 1 || asked > MOST_ROUNDS)
    {
        std::fprintf(stderr, "usage: bench [rounds]\n");
        return 2;
    }
    const int rounds = static_cast<int>(asked);
    std::printf("%d interleaved rounds; medians; ratios are those of the pairs\n", rounds);
    std::printf("%-42s %12s %12s %7s  %11s  %6s  %s\n", "", "ours us", "peer us", "ratio", "quartiles", "target",
                "met");
    bool bAllGood = true;
    // Made one at a time: some change what the others would measure.
    const std::function<Comparison()> makers[] = {MaskedLine,
                                                  WrittenLine,
                                                  AdapterList,
                                                  [] { return AdapterRoutes(1); },
                                                  [] { return AdapterRoutes(100); },
                                                  [] { return AdapterRoutes(10000); },
                                                  AdapterRoutesGrowth};
    for (const auto& make : makers)
        bAllGood &= MeasureAndPrint(make(), rounds);
    return bAllGood ? 0 : 1;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
}
