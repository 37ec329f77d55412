#pragma once

#include <cstddef>

#include <winsock2.h>

#include <windows.h>

/// What an operation has answered, in numbers and text that can be compared.
struct Answer
{
    char name[80];     ///< of the operation
    char allowed[160]; ///< by contract, as testing_support::Operation says it
    bool bException;   ///< one has left it
    bool bResult;
    bool bUnchanged; ///< the arguments
    char text[6000]; ///< of the arguments
};

// What is looked up in fault_operations.dll.
extern "C"
{
    /// Calls an operation, counted from 0, between two calls of `pCount`; without that its name is all of the
    /// answer. False when there is no such operation. Operations on an adapter are called with that of `pszGuid`.
    __declspec(dllexport) bool CallOperation(unsigned int uiOperation, const wchar_t* pszGuid,
                                             void (*pCount)(bool bBegin), Answer& answer);
}

/// Operations that do what none may do, which comes out only if the tool is right. They come last.
inline constexpr const char* PLANTED = "planted ";
