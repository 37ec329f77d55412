#include "failures.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <sstream>
#include <string>

#include <iphlpapi.h>
#include <netioapi.h>

#include <ntsecapi.h>
#include <setupapi.h>

void (*pAborted)() = nullptr;

namespace
{

constexpr std::uintptr_t MINUS_ONE = static_cast<std::uintptr_t>(-1);

struct Rule
{
    std::vector<Failure> failures;
    const char* pszFunctions;
};

/// A Win32 code is the result itself.
Failure Code(DWORD dwCode)
{
    return {dwCode};
}

Failure Released(std::uintptr_t result, DWORD dwLastError = ERROR_INVALID_HANDLE)
{
    return {result, dwLastError, true};
}

const Rule RULES[] = {
    // Those that cannot fail, or whose failure nobody could be told.
    {{},
     "___lc_codepage_func ___mb_cur_max_func __iob_func _amsg_exit _errno _initterm _wcsicmp abort fputc free "
     "fwrite localeconv memchr memcmp memcpy memmove memset strcmp strerror strlen strncmp towupper vfprintf wcslen "
     "wcstoul htonl htons ntohl WSAGetLastError DeleteCriticalSection EnterCriticalSection InitializeCriticalSection "
     "LeaveCriticalSection GetCurrentProcess GetCurrentThreadId GetLastError SetLastError GetLocalTime GetTickCount "
     "GetTickCount64 IsDBCSLeadByteEx RaiseException RtlCaptureContext RtlLookupFunctionEntry RtlUnwindEx "
     "RtlVirtualUnwind Sleep LsaNtStatusToWinError DsRoleFreeMemory FreeMibTable InitializeUnicastIpAddressEntry "
     "DeviceProperties_RunDLLW EqualSid IsWellKnownSid CompareFileTime GetCurrentProcessId GetCurrentThread "
     "GetSystemTime GetSystemTimeAsFileTime GetThreadPriority IsDebuggerPresent OutputDebugStringA "
     "QueryPerformanceCounter QueryPerformanceFrequency RemoveVectoredExceptionHandler TlsGetValue exit "
     "TryEnterCriticalSection __C_specific_handler _endthreadex _lock _unlock _setjmp longjmp fwprintf _ultoa "
     "_strdup fprintf fputs fputwc islower isspace isupper printf signal strtol _read _close CoUninitialize "
     "SetSystemTime"},
    // What the thread library of the state's DLL cannot do without.
    {{},
     "AddVectoredExceptionHandler CreateEventA CreateSemaphoreA DuplicateHandle GetHandleInformation GetThreadContext "
     "GetThreadTimes GetProcessTimes GetProcessAffinityMask GetSystemTimeAdjustment ReleaseSemaphore ResetEvent "
     "ResumeThread SetEvent SetProcessAffinityMask SetThreadContext SetThreadPriority SuspendThread TlsAlloc "
     "TlsSetValue _beginthreadex"},
    // Those that release: done, and then said to have failed.
    {{Released(FALSE)},
     "CloseHandle CloseServiceHandle FindClose IcmpCloseHandle FreeLibrary ReleaseMutex SetupDiDestroyDeviceInfoList"},
    {{Released(FALSE, ERROR_ACCESS_DENIED)}, "DeleteFileW"},
    {{Released(ERROR_INVALID_HANDLE)}, "RegCloseKey CancelIPChangeNotify CancelMibChangeNotify2"},
    {{Released(1)}, "LocalFree"},
    {{Released(0xC0000008)}, "LsaClose"},
    {{Released(MINUS_ONE, WSANOTINITIALISED)}, "WSACleanup"},
    // Those that answer FALSE or nothing, and why.
    {{{FALSE, ERROR_ACCESS_DENIED}},
     "AdjustTokenPrivileges LookupPrivilegeValueW OpenProcessToken CopyFileW CreateDirectoryW WriteFile ReadFile "
     "GetTempFileNameW GetTempPathW GetSystemDirectoryW GetPrivateProfileStringW WritePrivateProfileStringW "
     "GetVersionExA GetVersionExW GetProductInfo DisableThreadLibraryCalls OpenThread VirtualProtect VirtualQuery "
     "PathFileExistsW PathIsDirectoryW GetFileVersionInfoSizeW GetFileVersionInfoW VerQueryValueW "
     "SetupDiCallClassInstaller SetupDiEnumDeviceInfo SetupDiSetClassInstallParamsW SetupDiGetDeviceInstanceIdW "
     "SetupDiGetDeviceRegistryPropertyW ChangeServiceConfig2W CheckTokenMembership ConvertSidToStringSidW "
     "ConvertStringSecurityDescriptorToSecurityDescriptorW CreateServiceW CreateWellKnownSid DeleteService GetAce "
     "GetTokenInformation GetUserNameW OpenSCManagerW OpenServiceW RegisterServiceCtrlHandlerExW SetServiceStatus "
     "StartServiceCtrlDispatcherW StartServiceW AssignProcessToJobObject CreateEventW CreateJobObjectW CreatePipe "
     "CreateProcessW FileTimeToSystemTime FindNextFileW FlushFileBuffers FormatMessageA FormatMessageW "
     "GetExitCodeProcess GetFileInformationByHandle GetFileSizeEx GetModuleHandleA GetModuleHandleExW "
     "GetSystemWindowsDirectoryW LCMapStringW MoveFileExW OpenProcess PeekNamedPipe RemoveDirectoryW SetEndOfFile "
     "SetHandleInformation SetInformationJobObject TerminateJobObject TerminateProcess Icmp6SendEcho2 IcmpSendEcho "
     "StringFromGUID2"},
    {{{FALSE, ERROR_CALL_NOT_IMPLEMENTED}, {FALSE, ERROR_ACCESS_DENIED}}, "GetSystemWow64DirectoryW"},
    {{{FALSE, ERROR_ACCESS_DENIED}, {FALSE, ERROR_INSUFFICIENT_BUFFER}}, "GetModuleFileNameW"},
    {{{FALSE, ERROR_NOT_ENOUGH_MEMORY}, {FALSE, ERROR_MORE_DATA}}, "GetComputerNameExW"},
    {{{FALSE, ERROR_NO_UNICODE_TRANSLATION}}, "MultiByteToWideChar WideCharToMultiByte"},
    {{{0, ERROR_NOT_ENOUGH_MEMORY}}, "malloc calloc realloc CreateMutexW inet_ntoa"},
    {{{0, ERROR_MOD_NOT_FOUND}}, "LoadLibraryW GetModuleHandleW"},
    {{{0, ERROR_PROC_NOT_FOUND}}, "GetProcAddress"},
    {{{.result = 0, .bResultIsThirdArgument = true}}, "GetPrivateProfileIntW"},
    {{{MINUS_ONE, ERROR_PATH_NOT_FOUND}, {MINUS_ONE, ERROR_SHARING_VIOLATION}}, "CreateFileW"},
    {{{MINUS_ONE, ERROR_INVALID_DATA}}, "SetupDiGetClassDevsW IcmpCreateFile Icmp6CreateFile"},
    {{{MINUS_ONE, ERROR_FILE_NOT_FOUND}, {MINUS_ONE, ERROR_ACCESS_DENIED}}, "FindFirstFileW GetFileAttributesW"},
    {{{MINUS_ONE}, {1}, {0x80000000 /* a crash's code */}}, "_wspawnlp"},
    {{{MINUS_ONE}}, "mbtowc wctomb"},
    {{{WAIT_FAILED, ERROR_INVALID_HANDLE}, {WAIT_TIMEOUT}, {WAIT_ABANDONED, ERROR_SUCCESS, true}},
     "WaitForSingleObject"},
    {{{MINUS_ONE, WSAEINVAL}, {MINUS_ONE, WSAEFAULT}}, "WSAAddressToStringA WSAStringToAddressA"},
    // Those that answer a code.
    {{Code(WSAVERNOTSUPPORTED)}, "WSAStartup"},
    {{{0xC0000022}}, "LsaOpenPolicy LsaSetInformationPolicy"},
    {{Code(ERROR_FILE_NOT_FOUND), Code(ERROR_ACCESS_DENIED)}, "RegOpenKeyExW"},
    {{Code(ERROR_FILE_NOT_FOUND), Code(ERROR_MORE_DATA), Code(ERROR_KEY_DELETED)}, "RegQueryValueExW"},
    {{Code(ERROR_NO_MORE_ITEMS), Code(ERROR_MORE_DATA)}, "RegEnumKeyExW"},
    {{Code(ERROR_ACCESS_DENIED), Code(ERROR_KEY_DELETED)}, "RegCreateKeyExW RegSetValueExW RegUnLoadKeyW"},
    {{Code(ERROR_NOT_ENOUGH_MEMORY), Code(ERROR_BUFFER_OVERFLOW), Code(ERROR_NO_DATA)},
     "GetAdaptersAddresses GetAdaptersInfo"},
    {{Code(ERROR_NOT_SUPPORTED), Code(ERROR_INSUFFICIENT_BUFFER), Code(ERROR_NO_DATA)},
     "GetInterfaceInfo GetIpAddrTable GetIpForwardTable GetTcp6Table GetIpForwardTable2 GetUnicastIpAddressTable"},
    {{Code(ERROR_NOT_FOUND), Code(ERROR_DEV_NOT_EXIST)}, "GetAdapterIndex GetIfEntry ConvertInterfaceIndexToLuid"},
    {{Code(ERROR_ACCESS_DENIED), {.result = ERROR_BAD_ARGUMENTS, .bOnceOnly = true}, Code(ERROR_OBJECT_ALREADY_EXISTS)},
     "CreateIpForwardEntry CreateIpForwardEntry2"},
    {{Code(ERROR_ACCESS_DENIED), Code(ERROR_NOT_FOUND)},
     "DeleteIpForwardEntry DeleteIpForwardEntry2 DeleteIPAddress CreateUnicastIpAddressEntry "
     "DeleteUnicastIpAddressEntry"},
    {{Code(ERROR_ACCESS_DENIED), Code(ERROR_DUP_NAME)}, "SetAdapterIpAddress"},
    {{Code(RPC_S_SERVER_UNAVAILABLE)}, "DsRoleGetPrimaryDomainInformation"},
    {{Code(ERROR_ACCESS_DENIED)},
     "GetSecurityInfo NotifyAddrChange NotifyRouteChange RegDeleteValueW RegQueryInfoKeyW"},
    {{Code(ERROR_NO_MORE_ITEMS), Code(ERROR_MORE_DATA)}, "RegEnumValueW"},
    {{Code(ERROR_NOT_SUPPORTED)}, "GetIfTable2 GetIpInterfaceTable"},
    {{Code(ERROR_NOT_SUPPORTED), Code(ERROR_INSUFFICIENT_BUFFER)}, "GetIfTable"},
    {{Code(0xC0000001)}, "RtlGetVersion"},
    {{Code(0x80004005)}, "CoCreateInstance CoInitializeEx"},
    {{Code(13)}, "CM_Get_DevNode_Status"},
    {{{WAIT_FAILED, ERROR_INVALID_HANDLE}}, "WaitForMultipleObjects"},
};

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

HMODULE WINAPI LoadLibraryThatIsThere(const wchar_t* pszName)
{
    return ::LoadLibraryW(::lstrcmpiW(pszName, L"DEVMGR.DLL") == 0 ? ALWAYS_THERE : pszName);
}

void Abort()
{
    pAborted();
}

const StandIn STAND_INS[] = {
    {"abort", Address(&Abort)},
    {"_amsg_exit", Address(&Abort)},
    {"_wspawnlp", Address(&Done)},
    {"RegCreateKeyExW", Address(&CreateScratchKey)},
    {"Sleep", Address(&SleepShortly)},
    {"LoadLibraryW", Address(&LoadLibraryThatIsThere)},
    {"DeviceProperties_RunDLLW", Address(&Done)},
    {"SetAdapterIpAddress", Address(&Done)},
    {"CreateIpForwardEntry", Address(&Done)},
    {"CreateIpForwardEntry2", Address(&Done)},
    {"DeleteIpForwardEntry", Address(&Done)},
    {"DeleteIpForwardEntry2", Address(&Done)},
    {"DeleteIPAddress", Address(&Done)},
    {"LsaSetInformationPolicy", Address(&Done)},
    {"SetupDiEnumDeviceInfo", Address(&FirstAlone)},
    {"SetupDiSetClassInstallParamsW", Address(&Yes)},
    {"SetupDiCallClassInstaller", Address(&Yes)},
};

} // namespace

const std::vector<Failure>* FindFailures(const char* pszFunction)
{
    static const auto failures = [] {
        std::map<std::string, const std::vector<Failure>*> found;
        for (const Rule& rule : RULES)
        {
            std::istringstream names(rule.pszFunctions);
            for (std::string sName; names >> sName;)
                found[sName] = &rule.failures;
        }
        return found;
    }();
    // The library's operations are tried for themselves.
    const auto found = failures.find(std::strncmp(pszFunction, "_Z", 2) == 0 ? "free" : pszFunction);
    return found != failures.end() ? found->second : nullptr;
}

void* FindStandIn(const char* pszFunction)
{
    const auto* pFound = std::find_if(std::begin(STAND_INS), std::end(STAND_INS), [&](const StandIn& standIn) {
        return std::strcmp(standIn.pszFunction, pszFunction) == 0;
    });
    return pFound != std::end(STAND_INS) ? pFound->pFunction : nullptr;
}
