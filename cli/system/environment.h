#pragma once

#include <span>
#include <string>

namespace zelkctl
{

// What the tool finds out about the system by itself: of all this the library tells nothing.

struct SystemVersion
{
    unsigned long ulMajor;
    unsigned long ulMinor;
    unsigned long ulBuild;
};

/// The system's own number. What programs are commonly told ends at 6.2 for those without a manifest.
SystemVersion GetSystemVersion();

/// Whether the system runs from a boot image instead of an installation.
bool IsBootImage();

/// The parts of the library that do the work on the two generations of Windows.
enum class BackEnd
{
    PRE_VISTA,
    VISTA
};

BackEnd BackEndOf(const SystemVersion& version);

/// A function that a part of the library looks up when it starts. `pszWithout` is what does not work without it; null
/// when it is looked up and then used by nothing.
struct PlatformFunction
{
    const char* pszName;
    const char* pszWithout;
};

/// The functions of IPHLPAPI.DLL that the back end looks up.
std::span<const PlatformFunction> FunctionsOf(BackEnd backEnd);

bool HasFunction(const wchar_t* pszModule, const char* pszFunction);

/// Whether the command interpreter, by which the library runs commands, finds this one.
bool HasCommand(const wchar_t* pszCommand);

/// Whether a file can be made in the directory.
bool IsWritable(const std::wstring& sDirectory);

} // namespace zelkctl
