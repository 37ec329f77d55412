// What only one of the generations has: functions that may be missing, and words for an address's properties.

#include "back_end_test.h"

using namespace testing_support;

namespace
{

class Vista : public BackEndTest
{
};
class PreVista : public BackEndTest
{
};

TEST_F(Vista, WhatIsMissingFailsWhatNeedsIt)
{
    TheTrace.SetTraceLevel(3);
    Seed(CONNECTION_KEY, L"Name", StringData(L"LAN"));
    for (const char* pszMissing : {"nothing", "IPHLPAPI.DLL", "GetIpForwardTable2", "ConvertInterfaceIndexToLuid",
                                   "CreateIpForwardEntry2", "GetUnicastIpAddressTable", "GetTcp6Table"})
    {
        missing = {pszMissing};
        const auto make = [this] {
            SetApi(true);
            return api != nullptr;
        };
        Tell(Show("without", pszMissing), make);
        missing.clear();
        TellEvery(Show("without", pszMissing));
        ULONG ulSize = 5;
        Tell("TCP table", [&] { return Show(api->GetTcp6Table(nullptr, &ulSize, true), ulSize); });
    }
    SetApi(true);
    for (const char* pszFails : {"ConvertInterfaceIndexToLuid", "CreateIpForwardEntry2"})
    {
        codes[pszFails] = {50};
        TellAdded(Show("failing:", pszFails), Route("10.128.0.0"));
    }
    routes = {{.sNextHop = "10.0.0.1"}};
    missing = {"DeleteIpForwardEntry2"};
    SetApi(true);
    TellGateway("without DeleteIpForwardEntry2");
}

TEST_F(Vista, EveryPropertyOfAnAddressIsSaidInWords)
{
    SetApi(true);
    for (int i = 0; i < 18; ++i)
    {
        addresses = {{.sAddress = "10.0.0.2", .prefixOrigin = i, .suffixOrigin = i, .dadState = i % 8}};
        addresses[0].ulScope = static_cast<ULONG>(i % 16) << 28; // all the levels that the type can hold
        TellAddresses(Show("property", i));
    }
}

TEST_F(PreVista, AddressesAreSetByAFunctionThatMayBeMissing)
{
    for (const char* pszMissing : {"IPHLPAPI.DLL", "SetAdapterIpAddress", "nothing"})
        InNewProcess(pszMissing, [&] {
            SetApi(false);
            missing = {pszMissing};
            TellSet("of IPv6", Address("fe80::5"));
            TellSet("once", Address("10.0.0.5"));
            TellSet("twice", Address("10.0.0.5"));
        });
    EXPECT_THAT(
        trace.Lines(),
        testing::ElementsAre("[V] PreVistaAPI::Wrap_IPHLPAPI_DLL::~Wrap_IPHLPAPI_DLL : FreeLibrary('IPHLPAPI.DLL')"));
}

} // namespace
