#pragma once

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

inline constexpr const wchar_t* CONTROL = L"SYSTEM\\CurrentControlSet\\Control\\";
inline constexpr const wchar_t* NETWORK = L"\\{4D36E972-E325-11CE-BFC1-08002BE10318}";

/// What the kernel says of the network.
inline const nlohmann::json& Facts()
{
    static const nlohmann::json facts = [] {
        const char* pszFile = std::getenv("ZELK_E2E_FACTS");
        std::ifstream file(std::string("Z:") + (pszFile != nullptr ? pszFile : ""));
        return nlohmann::json::parse(file);
    }();
    return facts;
}

/// An adapter as the kernel describes it.
struct Link
{
    unsigned long ulIndex;
    std::string sName;
    std::string sHwAddr;
    velmor::string sGuid;
};

inline velmor::string GuidOf(unsigned long ulIndex)
{
    char guid[40];
    std::snprintf(guid, sizeof(guid), "{%08lX-0000-0000-0000-4E6574446576}", ulIndex);
    return guid;
}

/// All links but the loopback: Wine lists those too that have no IPv4 address.
inline std::vector<Link> Links()
{
    std::vector<Link> links;
    for (const nlohmann::json& fact : Facts()["links"])
    {
        if (fact["link_type"] == "loopback")
            continue;
        std::string sHwAddr = fact["address"];
        for (char& character : sHwAddr)
            character = character == ':' ? '-' : static_cast<char>(std::toupper(character));
        links.push_back({fact["ifindex"], fact["ifname"], sHwAddr, GuidOf(fact["ifindex"])});
    }
    return links;
}

/// The class subkey of a link, and what belongs to it elsewhere. Stand-ins know the link by the last word of its
/// connection's name.
class Seeded
{
public:
    explicit Seeded(const Link& link, const testing_support::RegistryData& device = {},
                    const testing_support::RegistryData& connectionDevice = {})
        : m_class(std::wstring(CONTROL) + L"Class" + NETWORK + L"\\" + Enum(link)),
          m_connection(Connection(link)),
          m_device(std::wstring(CONTROL) + L"DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}\\" + Enum(link))
    {
        const std::wstring sName(link.sName.begin(), link.sName.end());
        m_class.Set(L"", L"NetCfgInstanceId", testing_support::StringData(link.sGuid.c_str()));
        m_class.Set(L"", L"DriverDesc", testing_support::StringData(L"Driver of " + sName));
        m_class.Set(L"", L"DeviceInstanceID", device);
        m_device.Set(L"", L"DeviceInstance", device);
        m_connection.Set(L"", L"Name", testing_support::StringData(L"Connection " + sName));
        m_connection.Set(L"", L"PnpInstanceID", connectionDevice);
    }
    static std::wstring Connection(const Link& link)
    {
        return std::wstring(CONTROL) + L"Network" + NETWORK + L"\\" + link.sGuid.c_str() + L"\\Connection";
    }
    static std::wstring Enum(const Link& link) { return std::to_wstring(10000 + link.ulIndex).substr(1); }

private:
    testing_support::RegistryKeyScope m_class, m_connection, m_device;
};
