#pragma once

#include <backends/pre_vista_api.h>
#include <backends/vista_api.h>
#include <support/fakes/platform_test.h>

/// A back end on the made-up platform. Every helper writes down what one operation asks and traces.
class BackEndTest : public testing_support::PlatformTest
{
protected:
    void SetApi(bool bVista)
    {
        api.reset();
        if (bVista)
            api = std::make_unique<VistaAPI>();
        else
            api = std::make_unique<PreVistaAPI>();
    }
    ~BackEndTest() override
    {
        api.reset();
        EXPECT_EQ(0, iModules) << "a module is still loaded";
    }

    using Nic = TOLVA::NIC_INFO;
    static TOLVA::ROUTE_INFO Route(const char* pszDestination, const char* pszNextHop = "10.0.0.1")
    {
        return {11, testing_support::Ip(pszDestination), 8, testing_support::Ip(pszNextHop), 4};
    }
    static TOLVA::ASSOC_IP_ADDR Address(const char* pszAddress, unsigned char prefix = 24)
    {
        return {false, testing_support::Ip(pszAddress), prefix, 0, IpDadStateInvalid, {}};
    }
    void TellRoutes(const std::string& sTitle, const Nic& NicInfo = Adapter())
    {
        std::vector<TOLVA::ROUTE_INFO> list = {Route("1.1.1.1")};
        Tell(sTitle, [&] { return testing_support::Show(api->GetAdapterRoutes(NicInfo, list), list); });
    }
    void TellAdded(const std::string& sTitle, const TOLVA::ROUTE_INFO& route, const Nic& NicInfo = Adapter())
    {
        Tell(sTitle, [&] { return api->AddAdapterRoute(NicInfo, route); });
    }
    void TellAddresses(const std::string& sTitle, const Nic& NicInfo = Adapter())
    {
        std::vector<TOLVA::ASSOC_IP_ADDR> list(1);
        Tell(sTitle, [&] { return testing_support::Show(api->GetAdaptersIpAddrs(NicInfo, list), list); });
    }
    void TellGateway(const std::string& sTitle, const char* pszGateway = "10.0.0.9", const Nic& NicInfo = Adapter())
    {
        Tell(sTitle, [&] { return api->SetDefaultGateway(NicInfo, testing_support::Ip(pszGateway)); });
    }
    void TellSet(const std::string& sTitle, const TOLVA::ASSOC_IP_ADDR& address, const Nic& NicInfo = Adapter())
    {
        Tell(sTitle, [&] { return api->AddIpAddr(NicInfo, address); });
    }
    void TellDeleted(const std::string& sTitle, const char* pszAddress, const Nic& NicInfo = Adapter())
    {
        Tell(sTitle, [&] { return api->DeleteIpAddr(NicInfo, Address(pszAddress)); });
    }
    /// Every operation, with arguments that are good on every system.
    void TellEvery(const std::string& sTitle, const Nic& NicInfo = Adapter())
    {
        TellRoutes(sTitle, NicInfo);
        TellAdded(sTitle, Route("10.0.0.0"), NicInfo);
        TellAddresses(sTitle, NicInfo);
        TellGateway(sTitle, "10.0.0.9", NicInfo);
        TellSet(sTitle, Address("10.0.0.5"), NicInfo);
        TellDeleted(sTitle, "10.0.0.5", NicInfo);
    }

    std::unique_ptr<AbstractNetworkAPI> api;
};
