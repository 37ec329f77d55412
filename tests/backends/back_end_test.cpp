// What both generations' back ends are asked alike. Before Vista a table is kept until the process ends, so each case
// is a process.

#include "back_end_test.h"

using namespace testing_support;

namespace
{

class BackEnd : public BackEndTest, public testing::WithParamInterface<const char*>
{
protected:
    BackEnd() { Seed(CONNECTION_KEY, L"Name", StringData(L"LAN")); }

    void Run(const std::function<void()>& body)
    {
        InNewProcess("", [&] {
            SetApi(bVista);
            body();
            api.reset();
            iModules = 0; // what is kept until the process ends
        });
    }
    /// In every way that the platform's answers allow: before Vista there are two of them.
    void FailTable(const char* pszVista, const char* pszBefore, const std::function<void()>& tell)
    {
        TheTrace.SetTraceLevel(3);
        const std::deque<DWORD> BEFORE[] = {{50}, {0}, {TRUE_ANSWER, 87}, {TRUE_ANSWER, 122}};
        for (const auto& answers : BEFORE)
        {
            codes = {{pszBefore, answers}, {pszVista, {50}}};
            tell();
        }
        codes = {{"GetAdapterIndex", {55}}};
        tell();
        TheTrace.SetTraceLevel(4);
    }

    const bool bVista = GetParam() == std::string("Vista");
};
INSTANTIATE_TEST_SUITE_P(, BackEnd, testing::Values("PreVista", "Vista"),
                         [](const auto& param) { return std::string(param.param); });

TEST_P(BackEnd, Routes)
{
    Run([this] {
        routes = {{.dwIndex = 12, .sDestination = "10.1.0.0", .prefix = 16},
                  {.sDestination = "10.2.0.0", .prefix = 15, .dwMetric = 4000000000},
                  {.sDestination = "fd00::", .prefix = 64, .sNextHop = "fe80::1", .dwMetric = 300}};
        FailTable("GetIpForwardTable2", "GetIpForwardTable", [this] { TellRoutes("not to be had"); });
        routes.push_back({.dwIndex = 12, .sDestination = "10.3.0.0", .prefix = 32});
        TellRoutes("first");
        ulIndex = 12;
        TellRoutes("of another adapter; before Vista as they were at first");
        TellGateway("which has a table of its own");
    });
}

TEST_P(BackEnd, Addresses)
{
    Run([this] {
        addresses = {
            {.dwIndex = 12, .sAddress = "10.0.0.1", .prefix = 8},
            {.sAddress = "10.0.0.2", .wType = 0xFFFB},
            {.sAddress = "none"},
            {.sAddress = "10.0.0.3", .prefix = 25, .wType = 5, .prefixOrigin = 3},
            {.sAddress = "10.0.0.4", .prefix = 25, .wType = 4, .suffixOrigin = 3},
            {.sAddress = "fe80::7", .prefix = 64, .prefixOrigin = 2, .suffixOrigin = 4, .ulScope = 0x20000003}};
        FailTable("GetUnicastIpAddressTable", "GetIpAddrTable", [this] { TellAddresses("not to be had"); });
        TellAddresses("first");
        addresses.clear();
        TellAddresses("then there is none; before Vista they stay");
    });
}

TEST_P(BackEnd, AddedRoutes)
{
    Run([this] {
        codes = {{"GetAdapterIndex", {55}}}; // the index is the record's own
        TellAdded("added", Route("10.0.0.0"));
        TellAdded("there already", Route("10.0.0.0"));
        dwLowestMetric = 9;
        TellAdded("with a metric that is too low", Route("10.64.0.0"));
        codes = {{"CreateIpForwardEntry", {160}}, {"CreateIpForwardEntry2", {160}}};
        TellAdded("refused, then there already", Route("10.64.0.0"));
        TellAdded("of IPv6", Route("fd00::"));
        TellAdded("by IPv6", Route("10.0.0.0", "fe80::1"));
    });
}

/// Vista goes by the prefix length and the family, older systems by the destination alone.
const std::vector<FakeRoute> DEFAULT_ROUTES = {{.dwIndex = 12, .sNextHop = "10.0.0.4"},
                                               {.sNextHop = "10.0.0.1", .dwMetric = 7},
                                               {.prefix = 8, .sNextHop = "10.0.0.2", .dwMetric = 8},
                                               {.sDestination = "10.0.0.0", .sNextHop = "10.0.0.3", .dwMetric = 9},
                                               {.dwIndex = 12, .sDestination = "::", .sNextHop = "fe80::2"},
                                               {.sDestination = "::", .sNextHop = "fe80::1", .dwMetric = 10}};

TEST_P(BackEnd, DefaultGateways)
{
    Run([this] {
        routes = DEFAULT_ROUTES;
        TellGateway("one takes the place of another");
        TellGateway("once more: before Vista the table that is kept knows the deleted ones", "10.0.0.7");
        TellGateway("of IPv6", "fe80::9");
        ulIndex = 22;
        TellGateway("the first of its adapter");
        codes = {{"CreateIpForwardEntry", {160, 160, 160}}, {"CreateIpForwardEntry2", {160, 160, 160}}};
        TellGateway("refused three times", "10.0.0.8");
        codes.clear();
        TellGateway("the first of IPv6", "fe80::8");
    });
}

TEST_P(BackEnd, RefusedGateways)
{
    Run([this] {
        routes = DEFAULT_ROUTES;
        FailTable("GetIpForwardTable2", "GetIpForwardTable", [this] { TellGateway("no table or no index"); });
        TheTrace.SetTraceLevel(3);
        codes = {{"GetAdapterIndex", {TRUE_ANSWER, 55}}};
        ulIndex = 22;
        TellGateway("no second index, which older systems ask for");
        ulIndex = 11;
        codes = {{"DeleteIpForwardEntry", {5}}, {"DeleteIpForwardEntry2", {5}}};
        TellGateway("a deletion refused");
        codes = {{"DeleteIpForwardEntry", {TRUE_ANSWER, 1168}}, {"DeleteIpForwardEntry2", {TRUE_ANSWER, 1168}}};
        routes = DEFAULT_ROUTES;
        TellGateway("the second deletion refused");
        ulIndex = 22;
        codes = {{"CreateIpForwardEntry", {5010}}, {"CreateIpForwardEntry2", {5010}}};
        TellGateway("there already");
        codes = {{"ConvertInterfaceIndexToLuid", {50}}};
        TellGateway("no LUID, which older systems do not have");
    });
}

TEST_P(BackEnd, ChangedAddresses)
{
    Run([this] {
        oldAdapters = {{12, "10.0.0.9"}, {11, "0.0.0.0"}, {0, "10.0.0.5"}, {0, "10.0.0.5"}, {11, "10.0.0.6"}};
        const std::wstring sLong = std::wstring(38, L'x') + L"yz";
        codes["SetAdapterIpAddress"] = {TRUE_ANSWER, TRUE_ANSWER, 52, 5};
        TellSet("set", Address("10.20.30.40", 20));
        TellSet("of a longer name than there is room for", Address("10.0.0.5", 32), Adapter(sLong.c_str()));
        codes["_wspawnlp"] = {1};
        TellSet("refused", Address("10.0.0.5"));
        TellSet("refused otherwise, when older", Address("10.0.0.5"));
        TellSet("of IPv6", Address("fe80::5"));
        for (const char* pszAddress : {"10.0.0.5", "10.0.0.6", "10.0.0.9", "fe80::5"})
            TellDeleted("deleted", pszAddress); // only from the first adapter of the index
        for (const DWORD dwCode : {1168U, 31U, 87U})
        {
            codes = {{"DeleteIPAddress", {dwCode}}, {"_wspawnlp", {1}}};
            TellDeleted(Show("refused by", dwCode), "10.0.0.5");
        }
        for (const auto& answers : {std::deque<DWORD>{111, 50}, {111, 111}, {232}})
        {
            codes = {{"GetAdaptersInfo", answers}};
            TellDeleted("older systems have no table", "10.0.0.5");
        }
        codes = {{"GetAdapterIndex", {55}}};
        TellDeleted("nor an index", "10.0.0.5");
        oldAdapters.resize(1); // fits into the first buffer
        TellDeleted("of an adapter that is not there", "10.0.0.9");
        ulIndex = 12;
        TellDeleted("of the only one", "10.0.0.9");
    });
}

TEST_P(BackEnd, WhatNoOperationAccepts)
{
    Run([this] {
        TheTrace.SetTraceLevel(3);
        TellEvery("without a GUID", Adapter(L""));
        TellGateway("a gateway that is no address", "none");
        if (bVista)
        {
            TellSet("no address", Address("none"));
            TellDeleted("no address", "none");
        }
        MIB_TCP6TABLE table;
        ULONG ulSize = 5;
        codes["GetTcp6Table"] = {122, 0};
        Tell("TCP table", [&] { return Show(api->GetTcp6Table(&table, &ulSize, true), ulSize); });
        Tell("TCP table", [&] { return Show(api->GetTcp6Table(nullptr, &ulSize, false), ulSize); });
    });
}

} // namespace
