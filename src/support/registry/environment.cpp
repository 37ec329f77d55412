#include <support/registry/environment.h>

#include <algorithm>
#include <cwchar>
#include <iterator>

#include <support/platform/handles.h>
#include <support/platform/module_function.h>
#include <support/platform/module_path.h>
#include <support/registry/registry.h>

namespace
{

constexpr const wchar_t* VERSION_KEY = L"Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* DOMAIN_KEY = L"CurrentControlSet\\Services\\NTDS\\Parameters";
constexpr const wchar_t* MININT_KEYS[] = {L"SYSTEM\\CurrentControlSet\\Control\\MiniNT",
                                          L"SYSTEM\\CurrentControlSet\\Control\\MyMiniNT"};

struct Version
{
    unsigned long ulMajor;
    unsigned long ulMinor;

    bool operator==(const Version&) const = default;
};

struct EnvironmentCodes
{
    Version version;
    unsigned long ulWorkstation;
    unsigned long ulServer;
    unsigned long ulMiniNT; ///< 0: this version has no such environment
};

// The numbers are fixed outside the library: in the row of 6.1 the workstation has the greater one, unlike in every
// other.
constexpr EnvironmentCodes ENVIRONMENT_CODES[] = {
    {{5, 0}, 2, 3, 0},  {{5, 1}, 4, 4, 0},    {{5, 2}, 4, 5, 16},   {{6, 0}, 6, 7, 17},
    {{6, 1}, 9, 8, 18}, {{6, 2}, 10, 11, 19}, {{6, 3}, 12, 13, 20}, {{6, 4}, 14, 15, 0},
};

/// The first use, by the trace log's constructor, builds it: so it outlives the trace log.
WindowsEnvironment& Environment() noexcept
{
    static WindowsEnvironment environment;
    return environment;
}

bool ReadVersionRecords(WindowsEnvironment& environment)
{
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (!::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)))
        return false;
    environment.version = version;
    OSVERSIONINFOEXA narrowVersion = {};
    narrowVersion.dwOSVersionInfoSize = sizeof(narrowVersion);
    if (!::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&narrowVersion)))
        return false;
    environment.narrowVersion = narrowVersion;
    return true;
}

/// "6.3" as 6 and 3. A text of another form leaves the version as it is.
void ParseVersion(const velmor::string& sVersion, Version& version)
{
    wchar_t* pEnd = nullptr;
    const wchar_t* pMajor = sVersion.c_str();
    const unsigned long ulMajor = std::wcstoul(pMajor, &pEnd, 10);
    if (pEnd == pMajor || *pEnd == L'\0')
        return;
    const wchar_t* pMinor = pEnd + 1;
    const unsigned long ulMinor = std::wcstoul(pMinor, &pEnd, 10);
    if (pEnd != pMinor)
        version = {ulMajor, ulMinor};
}

/// False where the system should know the answer and fails to give it.
bool DetectX64(bool& bX64)
{
    wchar_t directory[260];
    if (::GetSystemWow64DirectoryW(directory, std::size(directory)) != 0)
        bX64 = true;
    else if (::GetLastError() == ERROR_CALL_NOT_IMPLEMENTED)
        bX64 = false;
    else
        return false;
    return true;
}

void AskProductInfo(const Version& version, bool& bServerCore)
{
    using ProductInfo = BOOL WINAPI(DWORD, DWORD, DWORD, DWORD, DWORD*);
    auto* const pGetProductInfo =
        velmor::FindFunction<ProductInfo>(::GetModuleHandleW(L"kernel32.dll"), "GetProductInfo");
    DWORD dwProductType = 0;
    if (pGetProductInfo != nullptr && pGetProductInfo(version.ulMajor, version.ulMinor, 0, 0, &dwProductType))
        bServerCore = false;
}

velmor::string ReadProductName(const velmor::Registry& software, unsigned long ulMajor)
{
    velmor::string sProductName;
    if (ulMajor >= 6)
        software.GetString(VERSION_KEY, L"ProductName", sProductName);
    else
    {
        wchar_t directory[260] = {};
        ::GetSystemDirectoryW(directory, std::size(directory));
        sProductName = velmor::ReadProfileText(L"Product Specification", L"Product", L"",
                                               velmor::string(directory) + L"\\prodspec.ini");
    }
    return sProductName;
}

bool IsMiniNT()
{
    return std::any_of(std::begin(MININT_KEYS), std::end(MININT_KEYS), [](const wchar_t* pszKey) {
        velmor::UniqueKey key;
        return ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, pszKey, 0, KEY_READ, key.Receive()) == ERROR_SUCCESS;
    });
}

void ChooseCode(WindowsEnvironment& environment, const Version& version)
{
    for (const EnvironmentCodes& row : ENVIRONMENT_CODES)
    {
        if (row.version != version)
            continue;
        const unsigned long ulInstalled = environment.bWorkstation ? row.ulWorkstation : row.ulServer;
        const unsigned long ulCode = environment.bMiniNT ? row.ulMiniNT : ulInstalled;
        if (ulCode != 0)
            environment.ulCode = ulCode;
        return;
    }
}

void Detect(WindowsEnvironment& environment)
{
    if (!ReadVersionRecords(environment))
        return;
    OSVERSIONINFOEXW& record = environment.version;
    Version version = {record.dwMajorVersion, record.dwMinorVersion};

    const velmor::Registry_Software software;
    const velmor::Registry_System system;
    velmor::string sText;
    if (software.GetString(VERSION_KEY, L"CurrentVersion", sText))
    {
        ParseVersion(sText, version);
        // Older systems keep their own numbers in the record, and so the back end of their own generation.
        if (record.dwMajorVersion > 5)
        {
            record.dwMajorVersion = version.ulMajor;
            record.dwMinorVersion = version.ulMinor;
        }
    }

    if (!DetectX64(environment.bX64))
        return;
    environment.bWorkstation = record.wProductType == VER_NT_WORKSTATION;
    AskProductInfo(version, environment.bServerCore);
    if (software.GetString(VERSION_KEY, L"InstallationType", sText) && sText.find(L"Core") != velmor::string::npos)
        environment.bServerCore = true;
    environment.sServicePack = L"";
    software.GetString(VERSION_KEY, L"CSDVersion", environment.sServicePack);
    environment.bDomainController = record.wProductType == VER_NT_DOMAIN_CONTROLLER ||
                                    (system.GetString(DOMAIN_KEY, L"Root Domain", sText) && !sText.empty());
    environment.sProductName = ReadProductName(software, record.dwMajorVersion);
    if (environment.bX64)
        environment.sProductName += L" (x64)";
    environment.bMiniNT = IsMiniNT();
    if (environment.bMiniNT)
        environment.bWorkstation = true;
    ChooseCode(environment, version);
}

} // namespace

void DetectWindowsEnvironment() noexcept
try
{
    Detect(Environment());
}
catch (...)
{
    // Out of memory: what was found so far stays.
}

unsigned long GetWindowsEnvironment() noexcept
{
    if (Environment().ulCode == 0)
        DetectWindowsEnvironment();
    return Environment().ulCode;
}

unsigned long GetWindowsMajorVersion() noexcept
{
    if (Environment().version.dwMajorVersion == 0)
        DetectWindowsEnvironment();
    return Environment().version.dwMajorVersion;
}

const WindowsEnvironment& GetDetectedEnvironment() noexcept
{
    return Environment();
}
