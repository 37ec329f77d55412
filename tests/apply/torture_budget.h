#pragma once

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <random>
#include <sstream>

/// What ./torture gives: the seed, and the seconds that it may take, 0 for all that there is. ./test tries a dozen.
struct TortureBudget
{
    TortureBudget()
    {
        if (const char* const text = std::getenv("ZELK_TORTURE"))
            std::istringstream(text) >> seed >> seconds;
    }
    [[nodiscard]] bool IsWhole() const { return seconds == 0; }
    /// After a number of tries, of all that there are.
    [[nodiscard]] bool IsOver(std::size_t done, std::size_t all) const
    {
        const auto passed = std::chrono::steady_clock::now() - begin;
        return done == all || (seconds < 0 && done == 12) || (seconds > 0 && passed > std::chrono::seconds(seconds));
    }

    unsigned int seed = std::random_device()();
    int seconds = -1;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};
