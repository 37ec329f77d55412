#pragma once

#include <support/fakes/platform_test.h>

constexpr auto UNKNOWN_FAMILY = static_cast<TOLVA::FAMILY_TYPE>(5);
constexpr TOLVA::FAMILY_TYPE FAMILIES[] = {TOLVA::FAMILY_IPV4, TOLVA::FAMILY_IPV6, TOLVA::FAMILY_BOTH};

/// The adapter "LAN 2" of index 11, on this Windows's own back end; another adapter has addresses and routes too. No
/// case has others: before Vista they are read once in the process.
class IpconfigTest : public testing_support::PlatformTest
{
protected:
    IpconfigTest()
    {
        TheTrace.SetTraceLevel(3);
        NicInfo.sNicName = L"\\DEVICE\\TCPIP_A";
        NicInfo.sNicEnum = L"0007";
        NicInfo.sNicPci = L"PCI\\A";
        Seed(testing_support::CONNECTION_KEY, L"Name", testing_support::StringData(L"LAN 2"));
        for (const bool bIpv6 : {false, true})
            Store(bIpv6, L"EnableDHCP", testing_support::MISSING);
        addresses = {{.sAddress = "fe80::1", .prefix = 64},
                     {.sAddress = "fe80::2", .prefix = 64},
                     {.sAddress = "10.0.0.1", .prefix = 16},
                     {.sAddress = "10.0.0.2", .prefix = 16},
                     {.dwIndex = 12, .sAddress = "10.0.0.7", .prefix = 8}};
        oldAdapters = {{11, "10.0.0.1"}, {0, "10.0.0.2"}};
        routes = {{.sNextHop = "10.0.0.1"},
                  {.dwIndex = 12, .sNextHop = "10.0.0.2"},
                  {.sDestination = "10.0.0.0", .prefix = 8, .sNextHop = "10.0.0.3"},
                  {.sDestination = "10.0.0.0", .sNextHop = "10.0.0.4"},
                  {.sDestination = "::", .sNextHop = "fe80::1"}};
    }

    static std::wstring InterfaceKey(bool bIpv6)
    {
        return std::wstring(L"SYSTEM\\CurrentControlSet\\services\\Tcpip") + (bIpv6 ? L"6" : L"") +
               L"\\Parameters\\Interfaces\\" + testing_support::GUID_A;
    }
    /// A value of the adapter's interface key; without data it is removed.
    void Store(bool bIpv6, const wchar_t* pszName, const testing_support::RegistryData& data)
    {
        Seed(InterfaceKey(bIpv6), pszName, data);
    }
    /// Those of a name for IPv4 and IPv6.
    static std::string Stored(const wchar_t* pszName)
    {
        using testing_support::RegistryKeyScope;
        return testing_support::Show(RegistryKeyScope(InterfaceKey(false)).Get(L"", pszName), "and",
                                     RegistryKeyScope(InterfaceKey(true)).Get(L"", pszName));
    }
    void RemoveKey(bool bIpv6) const
    {
        EXPECT_EQ(0, ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, InterfaceKey(bIpv6).c_str()));
    }
    /// Makes both tables of the platform fail from now on; older systems have read theirs.
    void FailTables(DWORD dwCode)
    {
        for (const char* pszFunction : {"GetUnicastIpAddressTable", "GetIpForwardTable2"})
            codes[pszFunction] = {dwCode};
    }

    TOLVA::NIC_INFO NicInfo = Adapter();
};
