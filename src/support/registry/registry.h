#pragma once

// Registry: settings are kept in the running system's SYSTEM and SOFTWARE hives, and what the library knows of the
// Windows it runs on (environment.h) is read there too.
//
// An offline hive is a file of another, not running, installation. The host product, which repairs machines from a
// boot image, mounts such hives under fixed names of HKEY_LOCAL_MACHINE. The library never reads them. But a mounted
// hive's file is held open, and the host relies on the library to let go of it: whatever operation uses the registry
// next unloads the hive as it ends.

#include <vector>

#include <winsock2.h>

#include <windows.h>

#include <support/platform/wide_file_stream.h>
#include <zelk_nm/string.h>

namespace velmor
{

namespace nonassignable_
{
class nonassignable
{
public:
    nonassignable& operator=(const nonassignable&) = delete;

protected:
    nonassignable() = default;
    nonassignable(const nonassignable&) = default;
    ~nonassignable() = default;
};
} // namespace nonassignable_

/// Typed values under HKEY_LOCAL_MACHINE. Subkeys are relative to the hive that the subclass stands for and begin
/// without a backslash; "CurrentControlSet" is resolved by the system.
///
/// Every operation answers true on success and false on the first platform call that fails. None traces; only memory
/// running out throws. Out-values are unchanged on failure. What the registry holds is not trusted: a value of another
/// type is a failure, and texts of odd length or without a terminator are read as far as they go.
class Registry : private nonassignable_::nonassignable
{
public:
    virtual ~Registry();

    // Writes make the key where it is missing.
    bool SetString(const string& sSubKey, const string& sName, const string& sValue) const;
    bool SetDword(const string& sSubKey, const string& sName, DWORD dwValue) const;
    bool SetMultiString(const string& sSubKey, const string& sName, const std::vector<string>& values) const;

    /// The text up to its first terminator. Fails also when the size changes while it is read.
    bool GetString(const string& sSubKey, const string& sName, string& sValue) const;
    bool GetDword(const string& sSubKey, const string& sName, DWORD& dwValue) const;
    /// The texts between the terminators. An empty text is an entry too, except at the end of the list.
    bool GetMultiString(const string& sSubKey, const string& sName, std::vector<string>& values) const;

    /// Appends the names of the subkeys, in the registry's order. Unlike the others it takes a full path below
    /// HKEY_LOCAL_MACHINE, whatever hive this object stands for. The first code other than success ends the walk
    /// without being a failure, be it the end or a name that is too long; only a key that does not open fails.
    bool EnumerateKeys(const string& sPath, std::vector<string>& names) const;

protected:
    Registry(HKEY hRoot, const string& sPrefix);

    /// Unloads the offline hive that is mounted at `pszMountKey`, if there is one; what happens stands in the unload
    /// log.
    static void UnloadMountedHive(const wchar_t* pszMountKey) noexcept;

private:
    bool Write(const string& sSubKey, const string& sName, DWORD dwType, const void* pData, std::size_t size) const;
    bool ReadText(const string& sSubKey, const string& sName, DWORD dwType, std::wstring& sText) const;

    static bool UnloadHive(const wchar_t* pszMountKey);
    static bool Enable_Privilege(const wchar_t* pszPrivilege, TOKEN_PRIVILEGES& previous, WideFileStream& log);
    static bool Disable_Privilege(const wchar_t* pszPrivilege, TOKEN_PRIVILEGES& previous, WideFileStream& log);

    HKEY m_hRoot;
    string m_sPrefix;
};

/// The running system's SYSTEM hive. Destruction unloads an offline SYSTEM hive that the host product has mounted.
class Registry_System : public Registry
{
public:
    Registry_System();
    ~Registry_System() override;
};

/// The running system's SOFTWARE hive. Destruction unloads an offline SOFTWARE hive that the host product has mounted.
class Registry_Software : public Registry
{
public:
    Registry_Software();
    ~Registry_Software() override;
};

} // namespace velmor
