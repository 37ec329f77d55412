// zelk_state_bench ROUNDS FILE: how long a reading of this machine takes beside its platform calls. The file remembers
// the time of an adapter; when it is there already, the time now is compared with it.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include <state/reading/read_machine.h>

#include "../paired.h"
#include "bare_reading.h"
#include "installed.h"
#include "process_comparison.h"

namespace
{

constexpr double MOST_OF_PLATFORM = 1.3;
constexpr double MOST_OF_GROWTH = 1.1;
constexpr std::size_t MANY = 64; ///< adapters, of which a whole process is measured: with few it is mostly its start

Comparison Reading(std::size_t count)
{
    const auto Ours = [count](int repetitions) {
        for (int i = 0; i < repetitions; ++i)
            if (zelk::ReadMachine().adapters.size() < count)
                throw std::runtime_error("the reading is not complete");
    };
    const auto Peer = [](int repetitions) {
        for (int i = 0; i < repetitions; ++i)
            AskForMachine();
    };
    return {"ReadMachine, " + std::to_string(count) + " adapters / its calls", Ours, Peer, 1, MOST_OF_PLATFORM};
}

bool Print(const std::string& what, double ours, double peer, double ratio, double target)
{
    std::printf("%-42s %12.4f %12.4f %7.3f  %11s  %6.2f  %s\n", what.c_str(), ours, peer, ratio, "", target,
                ratio <= target ? "yes" : "NO");
    return ratio <= target;
}

/// The time of an adapter among many beside that of an adapter among few.
bool CompareGrowth(const char* file, std::size_t count, double microseconds)
{
    std::size_t fewer = 0;
    double before = 0;
    if (std::ifstream(file) >> fewer >> before)
    {
        const double each = microseconds / static_cast<double>(count);
        const double eachBefore = before / static_cast<double>(fewer);
        return Print("an adapter of " + std::to_string(count) + " / one of " + std::to_string(fewer), each, eachBefore,
                     each / eachBefore, MOST_OF_GROWTH);
    }
    std::ofstream(file) << count << ' ' << microseconds << '\n';
    return true;
}

} // namespace

int main(int argc, char** argv)
try
{
    const int rounds = argc > 2 ? static_cast<int>(std::strtol(argv[1], nullptr, 10)) : 0;
    if (rounds < 1)
        return std::fprintf(stderr, "usage: zelk_state_bench ROUNDS FILE\n"), 2;
    const InstalledAdapters installed;
    bool good = true;
    const auto MeasureAndPrint = [&](const Comparison& comparison) {
        const Result result = Measure(comparison, rounds);
        good &=
            Print(comparison.sWhat, result.oursMicroseconds, result.peerMicroseconds, result.ratio, comparison.target);
        return result.oursMicroseconds;
    };
    const double reading = MeasureAndPrint(Reading(installed.Count()));
    good &= CompareGrowth(argv[2], installed.Count(), reading);
    if (installed.Count() >= MANY)
    {
        MeasureAndPrint(AdapterListProcess(installed.Count()));
        MeasureAndPrint(ApplyNothingProcess(installed.Count()));
    }
    return good ? 0 : 1;
}
catch (const std::exception& error)
{
    return std::fprintf(stderr, "zelk_state_bench: %s\n", error.what()), 1;
}
