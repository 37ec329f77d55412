#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "failures.h"

/// A platform function as a module under test sees it: behind a thunk that counts its calls and can make them fail.
struct Slot
{
    std::string sName;
    void* pOriginal;
    const std::vector<Failure>* pFailures;
    void* pThunk;
};

/// Which of the calls fail, counted from 1. Only functions that can fail are counted. Where none is to fail they are
/// remembered.
struct Plan
{
    unsigned int uiFirst = 0;
    unsigned int uiLast = 0;
    unsigned int uiWay = 0; ///< of failing; functions with fewer ways take their last one
};

/// A call that was made: of what, and from where, through all callers in the module under test.
struct Call
{
    const Slot* pSlot;
    std::size_t place;
};

namespace injector
{

/// The function's thunk. Ends the program when the tables do not know the function: it must not go untested.
void* Thunk(const char* pszFunction, void* pOriginal);
/// Where calls are told apart by their callers.
void Watch(HMODULE hModule);

/// From now on the calls of this thread are counted, and fail as planned.
void Arm(const Plan& plan);
/// Counting goes on, in this thread.
void Continue();
void Pause();

struct Counts
{
    unsigned int uiFallible = 0; ///< since Arm
    unsigned int uiFailed = 0;   ///< since Arm
    const Slot* pFirstFailed = nullptr;
    unsigned long long ullAll = 0;
    unsigned long long ullFailures = 0;
    std::size_t slots = 0;
};
Counts Count();

/// From now on there is always memory for small blocks.
void LeaveMemory();
/// The calls since Arm.
const std::vector<Call>& Recorded();

} // namespace injector
