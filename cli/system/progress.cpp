#include "system/progress.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <utility>

#include "system/console.h"

namespace zelkctl
{
namespace
{

using std::chrono::seconds;

/// False when the wait was ended before the time came.
bool SleepUntil(std::chrono::steady_clock::time_point time, HANDLE hEnd)
{
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(time - std::chrono::steady_clock::now());
    return ::WaitForSingleObject(hEnd, static_cast<DWORD>(std::max(left, milliseconds(0)).count())) == WAIT_TIMEOUT;
}

/// `show` is called with the seconds passed: `first`, and from then on after each `interval`.
template <class Show>
void Tick(HANDLE hEnd, seconds first, seconds interval, Show&& show)
{
    const auto start = std::chrono::steady_clock::now();
    for (seconds passed = first; SleepUntil(start + passed, hEnd); passed += interval)
        show(passed);
}

void Write(const std::string& sText)
{
    std::cerr << sText << std::flush;
}

void TickOnTerminal(HANDLE hEnd, const std::string& sDoing)
{
    std::size_t width = 0;
    Tick(hEnd, seconds(1), seconds(1), [&](seconds passed) {
        const std::string sLine = sDoing + " ... " + std::to_string(passed.count()) + " s";
        width = sLine.size();
        Write('\r' + sLine);
    });
    if (width > 0)
        Write('\r' + std::string(width, ' ') + '\r');
}

void TickByLines(HANDLE hEnd, const std::string& sDoing)
{
    Tick(hEnd, seconds(5), seconds(10),
         [&](seconds passed) { Write(sDoing + " ... " + std::to_string(passed.count()) + " s\n"); });
}

/// The operation matters, not its progress: what cannot be shown is not.
void Show(HANDLE hEnd, const std::string& sDoing) noexcept
try
{
    IsTerminal(stderr) ? TickOnTerminal(hEnd, sDoing) : TickByLines(hEnd, sDoing);
}
catch (...)
{
}

} // namespace

ProgressDisplay::ProgressDisplay(std::string sDoing)
    : m_end(::CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_ticker([hEnd = m_end.get(), sText = std::move(sDoing)] { Show(hEnd, sText); })
{
}

ProgressDisplay::~ProgressDisplay()
{
    ::SetEvent(m_end.get());
    m_ticker.join();
}

} // namespace zelkctl
