#pragma once

#include <functional>
#include <string>
#include <vector>

/// One thing that the library does beside what it is compared with. Both do the given number of repetitions.
struct Comparison
{
    std::string sWhat;
    std::function<void(int)> ours;
    std::function<void(int)> peer;
    int repetitions; ///< in one timing
    double target;   ///< the greatest ratio that is good enough
};

struct Result
{
    double oursMicroseconds; ///< medians for one repetition
    double peerMicroseconds;
    double ratio; ///< median of the paired ratios
    double ratioLow;
    double ratioHigh; ///< first and third quartile
};

/// Times both in turn, each round in the other order, so that what disturbs the machine meets both alike.
Result Measure(const Comparison& comparison, int rounds);
