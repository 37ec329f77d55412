#include "failures.h"

#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include <setupapi.h>

#include <support/files.h>

void (*pAborted)() = nullptr;

namespace
{

using Ways = std::vector<Failure>;

Ways ReadWays(std::istream& words)
{
    Ways ways;
    for (std::string sWord; words >> sWord;)
        if (sWord == "error")
            words >> ways.back().dwLastError;
        else if (sWord == "done")
            ways.back().bDoesItsWork = true;
        else if (sWord == "once")
            ways.back().bOnceOnly = true;
        else if (sWord == "third")
            ways.back().bResultIsThirdArgument = true;
        else
            ways.push_back({static_cast<std::uintptr_t>(std::stoull(sWord, nullptr, 0))});
    return ways;
}

/// By the names of the functions.
std::map<std::string, Ways> ReadTable()
{
    std::map<std::string, Ways> table;
    Ways ways;
    std::ifstream file(testing_support::BesideProgram(L"failures.txt"));
    for (std::string sLine; std::getline(file, sLine);)
    {
        std::istringstream words(sLine);
        if (sLine.starts_with('='))
            ways = ReadWays(words.ignore());
        else if (!sLine.starts_with('#'))
            for (std::string sName; words >> sName;)
                table[sName] = ways;
    }
    return table;
}

template <class Function>
void* Address(Function* pFunction)
{
    return reinterpret_cast<void*>(pFunction);
}

// Stand-ins.

constexpr const wchar_t* ALWAYS_THERE = L"kernel32.dll";

std::uintptr_t WINAPI Done(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t)
{
    return 0;
}

BOOL WINAPI Yes(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t)
{
    return TRUE;
}

/// A set of devices has one.
BOOL WINAPI FirstAlone(HDEVINFO, DWORD dwIndex, const SP_DEVINFO_DATA*)
{
    ::SetLastError(ERROR_NO_MORE_ITEMS);
    return dwIndex == 0;
}

/// The real key stays as it is; what is written goes into one that nobody reads.
LSTATUS WINAPI CreateScratchKey(HKEY, const wchar_t*, DWORD, wchar_t*, DWORD, REGSAM access,
                                SECURITY_ATTRIBUTES* pSecurity, HKEY* phKey, DWORD*)
{
    return ::RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\zelk_faults", 0, nullptr, REG_OPTION_VOLATILE, access,
                             pSecurity, phKey, nullptr);
}

void WINAPI SleepShortly(DWORD)
{
    ::Sleep(0);
}

constexpr DWORD HASTE = 8; ///< how many times as fast time runs, so that more cases are tried

BOOL WINAPI CountFast(LARGE_INTEGER* pCount)
{
    const BOOL bCounted = ::QueryPerformanceCounter(pCount);
    pCount->QuadPart *= HASTE;
    return bCounted;
}

DWORD WINAPI WaitFast(HANDLE handle, DWORD dwTime)
{
    return ::WaitForSingleObject(handle, dwTime == INFINITE ? INFINITE : dwTime / HASTE);
}

DWORD WINAPI WaitFastForOne(DWORD dwCount, const HANDLE* pHandles, BOOL bAll, DWORD dwTime)
{
    return ::WaitForMultipleObjects(dwCount, pHandles, bAll, dwTime == INFINITE ? INFINITE : dwTime / HASTE);
}

HMODULE WINAPI LoadLibraryThatIsThere(const wchar_t* pszName)
{
    return ::LoadLibraryW(::lstrcmpiW(pszName, L"DEVMGR.DLL") == 0 ? ALWAYS_THERE : pszName);
}

void Abort()
{
    pAborted();
}

/// With blanks around the names.
const std::pair<std::string_view, void*> STAND_INS[] = {
    {" abort _amsg_exit ", Address(&Abort)},
    {" RegCreateKeyExW ", Address(&CreateScratchKey)},
    {" Sleep ", Address(&SleepShortly)},
    {" QueryPerformanceCounter ", Address(&CountFast)},
    {" WaitForSingleObject ", Address(&WaitFast)},
    {" WaitForMultipleObjects ", Address(&WaitFastForOne)},
    {" LoadLibraryW ", Address(&LoadLibraryThatIsThere)},
    {" SetupDiEnumDeviceInfo ", Address(&FirstAlone)},
    {" SetupDiSetClassInstallParamsW SetupDiCallClassInstaller _ZN5TOLVA13EnableAdapterERKNS_8NIC_INFOE "
     "_ZN5TOLVA14DisableAdapterERKNS_8NIC_INFOE ",
     Address(&Yes)},
    {" _wspawnlp DeviceProperties_RunDLLW SetAdapterIpAddress CreateIpForwardEntry CreateIpForwardEntry2 "
     "DeleteIpForwardEntry DeleteIpForwardEntry2 DeleteIPAddress LsaSetInformationPolicy ",
     Address(&Done)},
};

} // namespace

const std::vector<Failure>* FindFailures(const char* pszFunction)
{
    static const auto table = ReadTable();
    // The library's operations are tried for themselves.
    const auto found = table.find(std::strncmp(pszFunction, "_Z", 2) == 0 ? "free" : pszFunction);
    return found != table.end() ? &found->second : nullptr;
}

void* FindStandIn(const char* pszFunction)
{
    for (const auto& [sFunctions, pStandIn] : STAND_INS)
        if (sFunctions.find(' ' + std::string(pszFunction) + ' ') != std::string::npos)
            return pStandIn;
    return nullptr;
}
