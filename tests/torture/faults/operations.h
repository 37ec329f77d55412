#pragma once

#include <cstddef>

#include <winsock2.h>

#include <windows.h>

/// What an operation has answered, in numbers and text that can be compared.
struct Answer
{
    char name[80]; ///< of the operation
    /// What else than the answer without failures it may give with `true`, by contract: parts of the text, separated by
    /// "|". "*" is anything. After `false` anything is allowed with "!", else everything stays as it was.
    char allowed[96];
    bool bException; ///< one has left it
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

inline constexpr const wchar_t* ADAPTER_KEY = L"0007";
inline constexpr const wchar_t* ADAPTER_DEVICE = L"PCI\\VEN_8086&DEV_1\\3";
/// Operations that do what none may do, which comes out only if the tool is right. They come last.
inline constexpr const char* PLANTED = "planted ";
