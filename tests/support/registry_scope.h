#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <winsock2.h>

#include <windows.h>

namespace testing_support
{

/// A value as it lies in the registry.
struct RegistryData
{
    DWORD dwType = REG_NONE;
    std::vector<BYTE> bytes;

    bool operator==(const RegistryData&) const = default;
};

RegistryData StringData(std::wstring_view sText, DWORD dwType = REG_SZ); ///< with one terminator
RegistryData DwordData(DWORD dwValue);
RegistryData ListData(const std::vector<std::wstring>& texts);

/// Writes a value below HKEY_LOCAL_MACHINE, which stays.
void SetValue(const std::wstring& sPath, const std::wstring& sName, const RegistryData& data);

/// A key below HKEY_LOCAL_MACHINE, made for one scope. At the end what did not exist before is deleted: the key, its
/// subkeys and its missing parents. A key that existed stays, and so do the values that were written into it; those
/// are for RegistryValueScope.
class RegistryKeyScope
{
public:
    explicit RegistryKeyScope(const std::wstring& sPath);
    RegistryKeyScope(const RegistryKeyScope&) = delete;
    RegistryKeyScope& operator=(const RegistryKeyScope&) = delete;
    ~RegistryKeyScope();

    [[nodiscard]] const std::wstring& Path() const noexcept { return m_sPath; }
    /// An empty subkey is the key itself; a missing one is made. Nothing is set without data.
    void Set(const std::wstring& sSubKey, const std::wstring& sName, const RegistryData& data) const;
    /// Type REG_NONE and no bytes when there is no such value.
    [[nodiscard]] RegistryData Get(const std::wstring& sSubKey, const std::wstring& sName) const;

private:
    std::wstring m_sPath;
    std::wstring m_sMade; ///< the topmost key that was missing
};

/// A value of an existing key, replaced for one scope and then put back as it was, or removed. The key is made where
/// it is missing.
class RegistryValueScope
{
public:
    RegistryValueScope(const std::wstring& sPath, const std::wstring& sName, const RegistryData& data);
    ~RegistryValueScope();

private:
    RegistryKeyScope m_key;
    std::wstring m_sName;
    RegistryData m_before;
};

} // namespace testing_support
