#include "ipconfig_test.h"

using namespace testing_support;

namespace
{

using Addresses = IpconfigTest;

std::vector<TOLVA::ASSOC_IP_ADDR> List(const std::string& sAddresses)
{
    std::vector<TOLVA::ASSOC_IP_ADDR> list;
    for (const std::string& sAddress : Words(sAddresses))
    {
        list.emplace_back().IpAddress = Ip(sAddress);
        list.back().SubnetPrefix = 20;
    }
    return list;
}

/// IPv6 addresses are passed over on older systems, and there one that is none is left to the system to refuse.
TEST_F(Addresses, AreReplaced)
{
    const struct
    {
        std::string sList;
        std::optional<DWORD> enabled4 = 1, enabled6 = 1; ///< by DHCP; without a value it is not known
        std::vector<std::string> refused = {};
    } rows[] = {
        {.sList = ""},
        {.sList = "none"},
        {.sList = "10.1.0.1"},
        {.sList = "10.1.0.1", .enabled4 = 0}, // no lease to release
        {.sList = "fe80::3"},
        {.sList = "10.1.0.1", .enabled6 = {}, .refused = {"release"}},
        {.sList = "fe80::3 10.1.0.1", .enabled6 = {}, .refused = {"10.0.0.1", "fe80::2"}},
        {.sList = "10.1.0.9 none 10.1.0.1", .enabled4 = {}, .refused = {"10.1.0.9", "255.255.255.255"}},
        {.sList = "fe80::2 10.1.0.1"}, // one that is there already is no exception
    };
    const auto Set = [&](const std::string& sList) {
        const bool bRc = TOLVA::SetAdaptersIpAddrs(NicInfo, List(sList));
        return Show(bRc, "EnableDHCP", Stored(L"EnableDHCP"));
    };
    for (const auto& row : rows)
    {
        Store(false, L"EnableDHCP", row.enabled4 ? DwordData(*row.enabled4) : MISSING);
        Store(true, L"Dhcpv6State", row.enabled6 ? DwordData(*row.enabled6) : MISSING);
        refused = row.refused;
        Tell(Show("set", row.sList, "refused", row.refused), [&] { return Set(row.sList); });
    }
    TheTrace.SetTraceLevel(4);
    Tell("set all", [&] { return Set("fe80::2 10.1.0.1"); });
    FailTables(5);
    Tell("without a table", [&] { return Set("10.1.0.1"); });
}

} // namespace
