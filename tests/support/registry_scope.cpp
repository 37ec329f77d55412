#include <support/registry_scope.h>

#include <gtest/gtest.h>

namespace testing_support
{
namespace
{

bool KeyExists(const std::wstring& sPath)
{
    HKEY hKey = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, sPath.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return false;
    ::RegCloseKey(hKey);
    return true;
}

} // namespace

RegistryData StringData(std::wstring_view sText, DWORD dwType)
{
    const std::wstring sWhole(sText);
    const auto* pBytes = reinterpret_cast<const BYTE*>(sWhole.c_str());
    return {dwType, {pBytes, pBytes + (sWhole.size() + 1) * sizeof(wchar_t)}};
}

RegistryData DwordData(DWORD dwValue)
{
    const auto* pBytes = reinterpret_cast<const BYTE*>(&dwValue);
    return {REG_DWORD, {pBytes, pBytes + sizeof(dwValue)}};
}

RegistryData ListData(const std::vector<std::wstring>& texts)
{
    std::wstring sWhole;
    for (const std::wstring& sText : texts)
        sWhole += sText + L'\0';
    return StringData(sWhole, REG_MULTI_SZ);
}

void SetValue(const std::wstring& sPath, const std::wstring& sName, const RegistryData& data)
{
    EXPECT_EQ(0, ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, sPath.c_str(), sName.c_str(), data.dwType, data.bytes.data(),
                                   static_cast<DWORD>(data.bytes.size())));
}

RegistryKeyScope::RegistryKeyScope(const std::wstring& sPath) : m_sPath(sPath)
{
    for (std::size_t end = 0; end != std::wstring::npos && m_sMade.empty();)
    {
        end = sPath.find(L'\\', end + 1);
        if (!KeyExists(sPath.substr(0, end)))
            m_sMade = sPath.substr(0, end);
    }
    HKEY hKey = nullptr;
    EXPECT_EQ(0,
              ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, sPath.c_str(), 0, nullptr, 0, KEY_READ, nullptr, &hKey, nullptr));
    ::RegCloseKey(hKey);
}

RegistryKeyScope::~RegistryKeyScope()
{
    if (m_sMade.empty())
        return;
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_sMade.c_str());
    EXPECT_FALSE(KeyExists(m_sMade));
}

void RegistryKeyScope::Set(const std::wstring& sSubKey, const std::wstring& sName, const RegistryData& data) const
{
    if (data != RegistryData())
        SetValue(sSubKey.empty() ? m_sPath : m_sPath + L'\\' + sSubKey, sName, data);
}

RegistryData RegistryKeyScope::Get(const std::wstring& sSubKey, const std::wstring& sName) const
{
    const std::wstring sPath = sSubKey.empty() ? m_sPath : m_sPath + L'\\' + sSubKey;
    RegistryData data;
    HKEY hKey = nullptr;
    DWORD dwSize = 0;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, sPath.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return data;
    if (::RegQueryValueExW(hKey, sName.c_str(), nullptr, &data.dwType, nullptr, &dwSize) == ERROR_SUCCESS)
    {
        data.bytes.resize(dwSize);
        ::RegQueryValueExW(hKey, sName.c_str(), nullptr, nullptr, data.bytes.data(), &dwSize);
    }
    ::RegCloseKey(hKey);
    return data;
}

RegistryValueScope::RegistryValueScope(const std::wstring& sPath, const std::wstring& sName, const RegistryData& data)
    : m_key(sPath), m_sName(sName), m_before(m_key.Get(L"", sName))
{
    m_key.Set(L"", sName, data);
}

RegistryValueScope::~RegistryValueScope()
{
    if (m_before != RegistryData())
        m_key.Set(L"", m_sName, m_before);
    else
        ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, m_key.Path().c_str(), m_sName.c_str());
}

} // namespace testing_support
