#pragma once

#include <cstdint>
#include <vector>

#include <winsock2.h>

#include <windows.h>

/// How a platform function fails once. Its output parameters stay untouched.
struct Failure
{
    std::uintptr_t result;
    DWORD dwLastError = ERROR_SUCCESS; ///< none is set with 0
    bool bDoesItsWork = false;         ///< releases, and waits that end with a bad answer
    bool bOnceOnly = false;            ///< an answer that is waited out for as long as it comes
    bool bResultIsThirdArgument = false;
};

/// How a function can fail: not at all, or in each of these ways of failures.txt. Null for a function that it does not
/// know.
const std::vector<Failure>* FindFailures(const char* pszFunction);

/// What is called instead of a function that would change the machine, that takes its time or that is missing here;
/// null for most functions.
void* FindStandIn(const char* pszFunction);

/// What the stand-ins of the run time call when the library gives up.
extern void (*pAborted)();
