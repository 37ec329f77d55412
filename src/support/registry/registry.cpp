#include <support/registry/registry.h>

#include <iterator>

#include <support/platform/handles.h>
#include <support/values/text_list.h>

namespace velmor
{
namespace
{

// Names of the mount points are fixed by the product that mounts the hives.
constexpr const wchar_t* OFFLINE_SYSTEM_KEY = L"{D0B3D3F4-05F2-4671-80D5-B569ABD77343}\\";
constexpr const wchar_t* OFFLINE_SOFTWARE_KEY = L"{72000DEF-16EA-418f-99F7-40C42BBC5C22}\\";

// As the host product has it, with the maker in lower case, unlike in the paths of the other logs.
constexpr const wchar_t* UNLOAD_LOG = L"X:\\Program Files\\velmor\\ZELK\\Logfiles\\registry.log";

constexpr DWORD TOKEN_ACCESS = TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY;

UniqueKey OpenKey(HKEY hRoot, const string& sPath, REGSAM access)
{
    UniqueKey key;
    if (::RegOpenKeyExW(hRoot, sPath.c_str(), 0, access, key.Receive()) != ERROR_SUCCESS)
        return {};
    return key;
}

void LogLine(WideFileStream& log, const wchar_t* pszText, DWORD dwNumber)
{
    log << pszText << static_cast<long long>(dwNumber) << L'\n';
    log.Flush();
}

UniqueToken OpenOwnToken(WideFileStream& log)
{
    UniqueToken token;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_ACCESS, token.Receive()))
    {
        LogLine(log, L"OpenProcessToken() failed ", ::GetLastError());
        return {};
    }
    return token;
}

bool AdjustPrivilege(HANDLE hToken, TOKEN_PRIVILEGES& wanted, TOKEN_PRIVILEGES* pPrevious, WideFileStream& log)
{
    DWORD dwSize = sizeof(TOKEN_PRIVILEGES);
    if (::AdjustTokenPrivileges(hToken, FALSE, &wanted, pPrevious != nullptr ? dwSize : 0, pPrevious, &dwSize))
        return true;
    LogLine(log, L"AdjustTokenPrivileges() failed ", ::GetLastError());
    return false;
}

} // namespace

Registry::Registry(HKEY hRoot, const string& sPrefix) : m_hRoot(hRoot), m_sPrefix(sPrefix) {}

Registry::~Registry() = default;

bool Registry::Write(const string& sSubKey, const string& sName, DWORD dwType, const void* pData,
                     std::size_t size) const
{
    UniqueKey key;
    if (::RegCreateKeyExW(m_hRoot, (m_sPrefix + sSubKey).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_READ | KEY_WRITE, nullptr, key.Receive(), nullptr) != ERROR_SUCCESS)
        return false;
    return ::RegSetValueExW(key.Get(), sName.c_str(), 0, dwType, static_cast<const BYTE*>(pData),
                            static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

bool Registry::SetString(const string& sSubKey, const string& sName, const string& sValue) const
{
    return Write(sSubKey, sName, REG_SZ, sValue.c_str(), (sValue.size() + 1) * sizeof(wchar_t));
}

bool Registry::SetDword(const string& sSubKey, const string& sName, DWORD dwValue) const
{
    return Write(sSubKey, sName, REG_DWORD, &dwValue, sizeof(dwValue));
}

bool Registry::SetMultiString(const string& sSubKey, const string& sName, const std::vector<string>& values) const
{
    std::wstring sData;
    for (const string& sValue : values)
        sData.append(sValue.c_str(), sValue.size() + 1);
    return Write(sSubKey, sName, REG_MULTI_SZ, sData.c_str(), (sData.size() + 1) * sizeof(wchar_t));
}

bool Registry::ReadText(const string& sSubKey, const string& sName, DWORD dwType, std::wstring& sText) const
{
    const UniqueKey key = OpenKey(m_hRoot, m_sPrefix + sSubKey, KEY_READ);
    DWORD dwFoundType = REG_NONE;
    DWORD dwSize = 0;
    if (!key ||
        ::RegQueryValueExW(key.Get(), sName.c_str(), nullptr, &dwFoundType, nullptr, &dwSize) != ERROR_SUCCESS ||
        dwFoundType != dwType)
        return false;

    // Room for an odd last byte, which belongs to no character and is then dropped.
    std::wstring sBuffer(dwSize / sizeof(wchar_t) + 1, L'\0');
    DWORD dwReadSize = dwSize;
    if (::RegQueryValueExW(key.Get(), sName.c_str(), nullptr, &dwFoundType, reinterpret_cast<BYTE*>(sBuffer.data()),
                           &dwReadSize) != ERROR_SUCCESS ||
        dwFoundType != dwType || dwReadSize != dwSize)
        return false;
    sBuffer.resize(dwSize / sizeof(wchar_t));
    sText.swap(sBuffer);
    return true;
}

bool Registry::GetString(const string& sSubKey, const string& sName, string& sValue) const
{
    std::wstring sText;
    if (!ReadText(sSubKey, sName, REG_SZ, sText))
        return false;
    sValue = sText.c_str();
    return true;
}

bool Registry::GetDword(const string& sSubKey, const string& sName, DWORD& dwValue) const
{
    const UniqueKey key = OpenKey(m_hRoot, m_sPrefix + sSubKey, KEY_READ);
    DWORD dwType = REG_NONE;
    DWORD dwRead = 0;
    DWORD dwSize = sizeof(dwRead);
    if (!key || ::RegQueryValueExW(key.Get(), sName.c_str(), nullptr, &dwType, reinterpret_cast<BYTE*>(&dwRead),
                                   &dwSize) != ERROR_SUCCESS)
        return false;
    if (dwType != REG_DWORD || dwSize != sizeof(dwRead))
        return false;
    dwValue = dwRead;
    return true;
}

bool Registry::GetMultiString(const string& sSubKey, const string& sName, std::vector<string>& values) const
{
    std::wstring sText;
    if (!ReadText(sSubKey, sName, REG_MULTI_SZ, sText))
        return false;
    values = SplitTexts(sText);
    return true;
}

bool Registry::EnumerateKeys(const string& sPath, std::vector<string>& names) const
{
    const UniqueKey key = OpenKey(HKEY_LOCAL_MACHINE, sPath, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS);
    if (!key)
        return false;
    for (DWORD index = 0;; ++index)
    {
        wchar_t name[255];
        DWORD length = std::size(name);
        if (::RegEnumKeyExW(key.Get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            return true;
        names.emplace_back(name, length);
    }
}

bool Registry::Enable_Privilege(const wchar_t* pszPrivilege, TOKEN_PRIVILEGES& previous, WideFileStream& log)
{
    const UniqueToken token = OpenOwnToken(log);
    if (!token)
        return false;

    TOKEN_PRIVILEGES wanted = {};
    wanted.PrivilegeCount = 1;
    wanted.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!::LookupPrivilegeValueW(nullptr, pszPrivilege, &wanted.Privileges[0].Luid))
    {
        // Reported but no failure: the unload itself tells whether the privilege was needed.
        LogLine(log, L"LookupPrivilegeValue() failed ", ::GetLastError());
        return true;
    }
    return AdjustPrivilege(token.Get(), wanted, &previous, log);
}

bool Registry::Disable_Privilege(const wchar_t* pszPrivilege, TOKEN_PRIVILEGES& previous, WideFileStream& log)
{
    const UniqueToken token = OpenOwnToken(log);
    if (!token)
        return false;

    LUID luid;
    if (!::LookupPrivilegeValueW(nullptr, pszPrivilege, &luid))
    {
        LogLine(log, L"LookupPrivilegeValue() failed ", ::GetLastError());
        return true;
    }
    return AdjustPrivilege(token.Get(), previous, nullptr, log);
}

bool Registry::UnloadHive(const wchar_t* pszMountKey)
{
    WideFileStream log;
    log.Open(UNLOAD_LOG, WideFileStream::Mode::Append);

    TOKEN_PRIVILEGES previousRestore = {};
    if (!Enable_Privilege(SE_RESTORE_NAME, previousRestore, log))
    {
        log << L"Enable_Privilege(SE_RESTORE_NAME) failed\n";
        return false;
    }
    TOKEN_PRIVILEGES previousBackup = {};
    if (!Enable_Privilege(SE_BACKUP_NAME, previousBackup, log))
    {
        log << L"Enable_Privilege(SE_BACKUP_NAME) failed\n";
        Disable_Privilege(SE_RESTORE_NAME, previousRestore, log);
        return false;
    }

    const LSTATUS lRc = ::RegUnLoadKeyW(HKEY_LOCAL_MACHINE, pszMountKey);
    LogLine(log, L"RegUnLoadKeyW returned ", static_cast<DWORD>(lRc));

    const bool bRestore = Disable_Privilege(SE_RESTORE_NAME, previousRestore, log);
    LogLine(log, L"Disable_Privilege(SE_RESTORE_NAME) returned ", bRestore);
    const bool bBackup = Disable_Privilege(SE_BACKUP_NAME, previousBackup, log);
    LogLine(log, L"Disable_Privilege(SE_BACKUP_NAME) returned ", bBackup);
    return lRc == ERROR_SUCCESS && bRestore && bBackup;
}

void Registry::UnloadMountedHive(const wchar_t* pszMountKey) noexcept
try
{
    const bool bMounted = static_cast<bool>(OpenKey(HKEY_LOCAL_MACHINE, pszMountKey, KEY_READ));
    if (bMounted)
        UnloadHive(pszMountKey);
}
catch (...)
{
    // Runs in destructors and is reported nowhere: the hive stays mounted for the next one.
}

Registry_System::Registry_System() : Registry(HKEY_LOCAL_MACHINE, L"SYSTEM\\") {}

Registry_System::~Registry_System()
{
    UnloadMountedHive(OFFLINE_SYSTEM_KEY);
}

Registry_Software::Registry_Software() : Registry(HKEY_LOCAL_MACHINE, L"SOFTWARE\\") {}

Registry_Software::~Registry_Software()
{
    UnloadMountedHive(OFFLINE_SOFTWARE_KEY);
}

} // namespace velmor
