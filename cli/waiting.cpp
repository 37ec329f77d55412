#include "waiting.h"

#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <stop_token>
#include <utility>

#include "console.h"

namespace zelkctl
{
namespace
{

using std::chrono::seconds;

/// False when the wait was stopped before the time came.
bool SleepUntil(std::chrono::steady_clock::time_point time, const std::stop_token& stop)
{
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    never.wait_until(lock, stop, time, [] { return false; });
    return !stop.stop_requested();
}

/// `show` is called with the seconds passed: `first`, and from then on after each `interval`.
template <class Show>
void Tick(const std::stop_token& stop, seconds first, seconds interval, Show&& show)
{
    const auto start = std::chrono::steady_clock::now();
    for (seconds passed = first; SleepUntil(start + passed, stop); passed += interval)
        show(passed);
}

void Write(const std::string& sText)
{
    std::cerr << sText << std::flush;
}

void TickOnTerminal(const std::stop_token& stop, const std::string& sDoing)
{
    std::size_t width = 0;
    Tick(stop, seconds(1), seconds(1), [&](seconds passed) {
        const std::string sLine = sDoing + " ... " + std::to_string(passed.count()) + " s";
        width = sLine.size();
        Write('\r' + sLine);
    });
    if (width > 0)
        Write('\r' + std::string(width, ' ') + '\r');
}

void TickByLines(const std::stop_token& stop, const std::string& sDoing)
{
    Tick(stop, seconds(5), seconds(10),
         [&](seconds passed) { Write(sDoing + " ... " + std::to_string(passed.count()) + " s\n"); });
}

/// The operation matters, not its progress: what cannot be shown is not.
void Show(const std::stop_token& stop, const std::string& sDoing) noexcept
try
{
    IsTerminal(stderr) ? TickOnTerminal(stop, sDoing) : TickByLines(stop, sDoing);
}
catch (...)
{
}

} // namespace

Waiting::Waiting(std::string sDoing)
    : m_ticker([sText = std::move(sDoing)](const std::stop_token& stop) { Show(stop, sText); })
{
}

} // namespace zelkctl
