#pragma once

// What the programs of ./torture have in common: their arguments, their figures and how they end.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include <winsock2.h>

#include <windows.h>

namespace torture
{

struct CloseHandleDeleter
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, CloseHandleDeleter>;

/// The arguments of a step: the seed of its random choices and the seconds that it may take, 0 for all of its work.
class Budget
{
public:
    Budget(int argc, wchar_t** argv)
        : m_seed(argc > 1 ? std::wcstoul(argv[1], nullptr, 10) : 0),
          m_seconds(argc > 2 ? std::wcstoul(argv[2], nullptr, 10) : 0)
    {
    }

    [[nodiscard]] unsigned long Seed() const noexcept { return m_seed; }
    [[nodiscard]] bool Whole() const noexcept { return m_seconds == 0; }
    /// Of the time that the step has.
    [[nodiscard]] std::chrono::seconds Seconds() const noexcept { return std::chrono::seconds(m_seconds); }
    /// Whether a part of that time has passed since construction. Never for all of the work.
    [[nodiscard]] bool Over(double part = 1) const
    {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - m_begin;
        return !Whole() && passed.count() >= part * static_cast<double>(m_seconds);
    }

private:
    unsigned long m_seed;
    unsigned long m_seconds;
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

template <class Value>
void Figure(const char* name, const Value& value)
{
    std::cout << name << '\t' << value << std::endl; // at once: who waits sees how far it is
}

/// Ends the step where something is not as it should be.
inline void Check(bool right, const std::string& wrong)
{
    if (right)
        return;
    std::cerr << wrong << std::endl;
    std::exit(1);
}

} // namespace torture
