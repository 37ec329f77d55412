// What the back ends are asked, step by step as golden/backends/steps.json says it, and in the golden texts what they
// answer, ask of the platform and trace.

#include <backends/pre_vista_api.h>
#include <backends/vista_api.h>
#include <support/fakes/platform_test.h>
#include <support/registry_json.h>

using namespace testing_support;
using nlohmann::json;

namespace
{

/// What an operation is about: of the arguments those that a step names, else good ones.
struct Question
{
    const json& step;
    std::string sAddress;

    [[nodiscard]] TOLVA::NIC_INFO Nic() const
    {
        TOLVA::NIC_INFO NicInfo;
        NicInfo.sNicGuid = Wide(step.value("guid", Show(GUID_A)));
        return NicInfo;
    }
    [[nodiscard]] TOLVA::ROUTE_INFO Route() const
    {
        return {11, Ip(sAddress), 8, Ip(step.value("nextHop", "10.0.0.1")), 4};
    }
    [[nodiscard]] TOLVA::ASSOC_IP_ADDR Address() const
    {
        const unsigned char prefix = step.value("prefix", static_cast<unsigned char>(24));
        return {false, Ip(sAddress), prefix, 0, IpDadStateInvalid, {}};
    }
};

const struct
{
    const char* pszName;
    const char* pszAddress; ///< by default
    std::string (*pAsk)(AbstractNetworkAPI& api, const Question& question);
} OPERATIONS[] = {
    {"routes", "1.1.1.1",
     [](AbstractNetworkAPI& api, const Question& question) {
         std::vector<TOLVA::ROUTE_INFO> list = {question.Route()};
         return Show(api.GetAdapterRoutes(question.Nic(), list), list);
     }},
    {"add", "10.0.0.0",
     [](AbstractNetworkAPI& api, const Question& question) {
         return Show(api.AddAdapterRoute(question.Nic(), question.Route()));
     }},
    {"addresses", "",
     [](AbstractNetworkAPI& api, const Question& question) {
         std::vector<TOLVA::ASSOC_IP_ADDR> list(1);
         return Show(api.GetAdaptersIpAddrs(question.Nic(), list), list);
     }},
    {"gateway", "10.0.0.9",
     [](AbstractNetworkAPI& api, const Question& question) {
         return Show(api.SetDefaultGateway(question.Nic(), Ip(question.sAddress)));
     }},
    {"set", "10.0.0.5",
     [](AbstractNetworkAPI& api, const Question& question) {
         return Show(api.AddIpAddr(question.Nic(), question.Address()));
     }},
    {"delete", "10.0.0.5",
     [](AbstractNetworkAPI& api, const Question& question) {
         return Show(api.DeleteIpAddr(question.Nic(), question.Address()));
     }},
};

class BackEndTest : public PlatformTest
{
protected:
    ~BackEndTest() override
    {
        api.reset();
        EXPECT_EQ(0, iModules) << "a module is still loaded";
    }

    void Make(bool bVista)
    {
        api.reset();
        if (bVista)
            api = std::make_unique<VistaAPI>();
        else
            api = std::make_unique<PreVistaAPI>();
    }
    /// Arranges the platform, and asks for one of the operations or "every" one.
    void Take(const json& step)
    {
        Arrange(step);
        const std::string sAsked = step.value("ask", ""), sTitle = step.value("title", "");
        if (sAsked == "make")
            Tell(sTitle, [&] { return Make(true), true; });
        if (sAsked == "TCP table")
            Tell(sTitle, [&] {
                MIB_TCP6TABLE table;
                ULONG ulSize = step["size"];
                const bool bTable = step["table"];
                return Show(api->GetTcp6Table(bTable ? &table : nullptr, &ulSize, step.value("sorted", bTable)),
                            ulSize);
            });
        for (const auto& [pszName, pszAddress, pAsk] : OPERATIONS)
            if (sAsked == pszName || sAsked == "every")
                Tell(sTitle, [&, pAsk = pAsk, pszAddress = pszAddress] {
                    return pAsk(*api, {step, step.value("address", pszAddress)});
                });
    }

    std::unique_ptr<AbstractNetworkAPI> api;
};

struct Case
{
    std::string sName, sWindows;
    json steps;
};

void PrintTo(const Case& one, std::ostream* pStream)
{
    *pStream << one.sName;
}

std::vector<Case> Cases()
{
    std::vector<Case> cases;
    const json all = StepsOf("backends");
    for (const auto& [sGenerations, groups] : all.items())
        for (const std::string& sWindows : Words(sGenerations))
            for (const auto& [sName, steps] : groups.items())
                cases.push_back({sName, sWindows, steps});
    return cases;
}

class BackEnd : public BackEndTest, public testing::WithParamInterface<Case>
{
};
INSTANTIATE_TEST_SUITE_P(, BackEnd, testing::ValuesIn(Cases()),
                         [](const auto& param) { return param.param.sName + '_' + param.param.sWindows; });

/// Before Vista a table and a module are kept until the process ends, so each case is a process.
TEST_P(BackEnd, Takes)
{
    const bool bVista = GetParam().sWindows == "Vista";
    const auto run = [&] {
        Make(bVista);
        for (const json& step : GetParam().steps)
            Take(step);
        ExpectNothingOpen();
    };
    if (bVista)
        run();
    else
        InNewProcess("", run);
}

class Vista : public BackEndTest
{
};
class PreVista : public BackEndTest
{
};

TEST_F(Vista, EveryPropertyOfAnAddressIsSaidInWords)
{
    Make(true);
    for (int i = 0; i < 18; ++i)
    {
        addresses = {{.sAddress = "10.0.0.2", .prefixOrigin = i, .suffixOrigin = i, .dadState = i % 8}};
        addresses[0].ulScope = static_cast<ULONG>(i % 16) << 28; // all the levels that the type can hold
        Take({{"title", Show("property", i)}, {"ask", "addresses"}});
    }
}

TEST_F(PreVista, AddressesAreSetByAFunctionThatMayBeMissing)
{
    for (const char* pszMissing : {"IPHLPAPI.DLL", "SetAdapterIpAddress", "nothing"})
        InNewProcess(pszMissing, [&] {
            Make(false);
            missing = {pszMissing};
            Take({{"title", "of IPv6"}, {"ask", "set"}, {"address", "fe80::5"}});
            for (const char* pszTitle : {"once", "twice"})
                Take({{"title", pszTitle}, {"ask", "set"}});
        });
    EXPECT_THAT(
        trace.Lines(),
        testing::ElementsAre("[V] PreVistaAPI::Wrap_IPHLPAPI_DLL::~Wrap_IPHLPAPI_DLL : FreeLibrary('IPHLPAPI.DLL')"));
}

} // namespace
