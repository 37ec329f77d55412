#include <tuple>

#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

using Dhcp = IpconfigTest;

/// A state as it lies in the registry: -1 is a missing value, -2 one that is no number.
RegistryData Number(int iState)
{
    return iState == -1 ? MISSING : iState == -2 ? StringData(L"1") : DwordData(static_cast<DWORD>(iState));
}

/// A request that came up every day: a static adapter becomes a DHCP client.
TEST_F(Dhcp, AStaticAdapterReturns)
{
    Store(false, L"EnableDHCP", DwordData(0));
    Store(true, L"Dhcpv6State", DwordData(0));
    Store(false, L"NameServer", StringData(L"192.0.2.53"));
    const auto Return = [&] {
        const bool bRc = TOLVA::ReturnToDhcp(NicInfo, TOLVA::FAMILY_BOTH);
        return Show(bRc, Stored(L"EnableDHCP"), Stored(L"Dhcpv6State"), Stored(L"NameServer"));
    };
    TheTrace.SetTraceLevel(4);
    Tell("return to DHCP", Return);
}

TEST_F(Dhcp, WhetherItIsEnabled)
{
    for (const int iState4 : {-2, -1, 0, 1, 2})
        for (const int iState6 : {-2, -1, 0, 1, 2})
        {
            Store(false, L"EnableDHCP", Number(iState4));
            Store(true, L"Dhcpv6State", Number(iState6));
            for (const auto enFamily : FAMILIES)
            {
                bool bOn = false, bOff = true;
                Tell(Show("states", iState4, iState6, "family", enFamily), [&] {
                    return Show(TOLVA::IsDhcpEnabled(NicInfo, enFamily, bOn), bOn,
                                TOLVA::IsDhcpEnabled(NicInfo, enFamily, bOff), bOff);
                });
            }
        }
}

TEST_F(Dhcp, LeasesOfBothFamiliesUntilOneIsRefused)
{
    const std::tuple<TOLVA::FAMILY_TYPE, std::string> rows[] = {
        {TOLVA::FAMILY_IPV4, "none"},     {TOLVA::FAMILY_IPV6, "none"}, {TOLVA::FAMILY_BOTH, "none"},
        {TOLVA::FAMILY_BOTH, "ipconfig"}, {TOLVA::FAMILY_BOTH, "6"},    {TOLVA::FAMILY_IPV6, "ipconfig"}};
    for (const auto& [enFamily, sRefused] : rows)
    {
        refused = {sRefused};
        Tell(Show("renew", enFamily, "refused:", sRefused),
             [&, enFamily = enFamily] { return TOLVA::RenewDhcp(NicInfo, enFamily); });
        Tell(Show("release", enFamily, "refused:", sRefused),
             [&, enFamily = enFamily] { return TOLVA::ReleaseDhcp(NicInfo, enFamily); });
    }
}

/// On older systems the addresses are those of IPv4, and they have been read before they cannot be.
TEST_F(Dhcp, ReturningStopsForFewThings)
{
    const auto BOTH = TOLVA::FAMILY_BOTH, IPV4 = TOLVA::FAMILY_IPV4, IPV6 = TOLVA::FAMILY_IPV6;
    const struct
    {
        TOLVA::FAMILY_TYPE enFamily;
        int iState4 = 0, iState6 = 0;
        DWORD dwTable = TRUE_ANSWER;
        int iFailWrite = 0;
        std::vector<std::string> refused = {};
    } rows[] = {{.enFamily = IPV6},
                {.enFamily = BOTH, .iState4 = 1, .iState6 = 2},
                {.enFamily = BOTH, .iState6 = -1},
                {.enFamily = IPV4, .iState4 = 2, .dwTable = 5},
                {.enFamily = IPV4, .iState4 = 2, .refused = {"10.0.0.1", "able", "renew"}},
                {.enFamily = IPV4, .iState4 = 2, .iFailWrite = 1},
                {.enFamily = BOTH, .iState4 = 1}};
    for (const auto& row : rows)
    {
        FailTables(row.dwTable);
        refused = row.refused;
        Store(false, L"EnableDHCP", Number(row.iState4));
        Store(true, L"Dhcpv6State", Number(row.iState6));
        iFailWrite = row.iFailWrite;
        const auto Return = [&] {
            const bool bRc = TOLVA::ReturnToDhcp(NicInfo, row.enFamily);
            return Show(bRc, "EnableDHCP", Stored(L"EnableDHCP"));
        };
        Tell(Show("family", row.enFamily, "states", row.iState4, row.iState6, "refused", row.refused), Return);
    }
}

} // namespace
