#include "system/environment.h"

#include <algorithm>
#include <memory>
#include <type_traits>

#include <winsock2.h>

#include <windows.h>

#include "system/registry.h"

namespace zelkctl
{
namespace
{

// As for the library, either of them.
constexpr const wchar_t* BOOT_IMAGE_KEYS[] = {L"SYSTEM\\CurrentControlSet\\Control\\MiniNT",
                                              L"SYSTEM\\CurrentControlSet\\Control\\MyMiniNT"};

constexpr PlatformFunction PRE_VISTA_FUNCTIONS[] = {{"SetAdapterIpAddress", "static addresses cannot be set"}};

constexpr const char* NO_NEW_ROUTES = "routes cannot be added and default gateways cannot be set";
constexpr PlatformFunction VISTA_FUNCTIONS[] = {
    {"GetUnicastIpAddressTable", "addresses can neither be listed nor replaced"},
    {"GetIpForwardTable2", "routes and default gateways can neither be listed nor replaced"},
    {"FreeMibTable", "every list of addresses or routes stays in memory"},
    {"ConvertInterfaceIndexToLuid", NO_NEW_ROUTES},
    {"CreateIpForwardEntry2", NO_NEW_ROUTES},
    {"DeleteIpForwardEntry2", "default gateways cannot be replaced"},
    {"GetTcp6Table", "TCP connections over IPv6 cannot be listed"},
    {"CreateUnicastIpAddressEntry", nullptr},
    {"DeleteUnicastIpAddressEntry", nullptr},
    {"InitializeUnicastIpAddressEntry", nullptr}};

// Those that every interpreter tries.
constexpr const wchar_t* COMMAND_EXTENSIONS[] = {L".com", L".exe", L".bat", L".cmd"};

struct UnloadModule
{
    void operator()(HMODULE hModule) const noexcept { ::FreeLibrary(hModule); }
};
using UniqueModule = std::unique_ptr<std::remove_pointer_t<HMODULE>, UnloadModule>;

/// The interpreter looks into the current directory and then along the path, and nowhere else: unlike when a program is
/// started directly, the system's own directory has to be on the path.
std::wstring CommandPath()
{
    std::wstring sPath(::GetEnvironmentVariableW(L"PATH", nullptr, 0), L'\0');
    sPath.resize(::GetEnvironmentVariableW(L"PATH", sPath.data(), static_cast<DWORD>(sPath.size())));
    return L".;" + sPath;
}

} // namespace

SystemVersion GetSystemVersion()
{
    using RtlGetVersion = LONG WINAPI(OSVERSIONINFOW*);
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    // Has no import library everywhere, and is there on every system.
    auto* const pRtlGetVersion = reinterpret_cast<RtlGetVersion*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    if (pRtlGetVersion != nullptr)
        pRtlGetVersion(&version);
    return {version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber};
}

bool IsBootImage()
{
    return std::ranges::any_of(BOOT_IMAGE_KEYS, KeyExists);
}

BackEnd BackEndOf(const SystemVersion& version)
{
    return version.ulMajor >= 6 ? BackEnd::VISTA : BackEnd::PRE_VISTA;
}

std::span<const PlatformFunction> FunctionsOf(BackEnd backEnd)
{
    if (backEnd == BackEnd::VISTA)
        return VISTA_FUNCTIONS;
    return PRE_VISTA_FUNCTIONS;
}

bool HasFunction(const wchar_t* pszModule, const char* pszFunction)
{
    const UniqueModule module(::LoadLibraryW(pszModule));
    return module && ::GetProcAddress(module.get(), pszFunction) != nullptr;
}

bool HasCommand(const wchar_t* pszCommand)
{
    return std::ranges::any_of(COMMAND_EXTENSIONS, [&, sPath = CommandPath()](const wchar_t* pszExtension) {
        return ::SearchPathW(sPath.c_str(), pszCommand, pszExtension, 0, nullptr, nullptr) != 0;
    });
}

bool IsWritable(const std::wstring& sDirectory)
{
    const std::wstring sFile = sDirectory + L"\\zelkctl." + std::to_wstring(::GetCurrentProcessId());
    HANDLE hFile = ::CreateFileW(sFile.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    return hFile != INVALID_HANDLE_VALUE && ::CloseHandle(hFile);
}

} // namespace zelkctl
