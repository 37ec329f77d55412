#include <cstring>

#include "backends_test.h"

namespace
{

class PreVista : public BackendTest
{
protected:
    /// Asks for a table that cannot be had, in every way that the platform's two answers allow.
    void AskInVain(const char* pszFunction, const std::function<void()>& ask, const std::string& sLoad,
                   const std::string& sFailure)
    {
        const std::pair<std::deque<DWORD>, std::string> rows[] = {
            {{50}, "50\n"}, {{0}, "0\n"}, {{TRUE_ANSWER, 87}, "87\n"}, {{TRUE_ANSWER, 122}, "122\n"}};
        for (const auto& [answers, sCode] : rows)
        {
            codes[pszFunction] = answers;
            ask();
            EXPECT_EQ(sLoad + "LoadTable : ... ending( " + pszFunction + " failed ) : dwRc = " + sCode + sFailure,
                      trace.Complaints());
        }
    }

    PreVistaAPI api;
};

const std::string INDEX_FAILED = "[E] TOLVA::GetAdapterIndex : ... ending(GetAdapterIndex failed) : dwRc = 55\n";
const std::string ROUTES = "[E] PreVistaAPI::Wrap_MIB_IPFORWARDTABLE::";
const std::string ADDRESSES = "[E] PreVistaAPI::Wrap_MIB_IPADDRTABLE::";

// The tables are kept until the process ends, so each case that loads one is a process.

TEST_F(PreVista, RoutesAreThoseOfTheFirstReading)
{
    InNewProcess([this] {
        oldRoutes = {OldRow(12, "10.1.0.0", "255.255.0.0", "10.0.0.1", 1),
                     OldRow(11, "10.2.0.0", "255.254.0.0", "10.0.0.1", 4000000000)};
        std::vector<TOLVA::ROUTE_INFO> list = {Route("1.1.1.1", 32, "0.0.0.0", 9)};
        AskInVain(
            "GetIpForwardTable", [&] { EXPECT_FALSE(api.GetAdapterRoutes(Adapter(), list)); }, ROUTES,
            ROUTES + "GetAdapterRoutes : ... ending( Failed to load MIB IP Forward table )\n");
        indexCodes = {55};
        EXPECT_FALSE(api.GetAdapterRoutes(Adapter(), list));
        EXPECT_EQ(INDEX_FAILED + ROUTES + "GetAdapterRoutes : ... ending( TOLVA::GetAdapterIndex failed )\n",
                  trace.Complaints());
        Asked();

        oldRoutes.clear();
        EXPECT_TRUE(api.GetAdapterRoutes(Adapter(), list));
        ulIndex = 12;
        EXPECT_TRUE(api.GetAdapterRoutes(Adapter(), list));
        EXPECT_EQ("1.1.1.1/32 via 0.0.0.0 if 11 metric 9; 10.2.0.0/15 via 10.0.0.1 if 11 metric 4000000000; "
                  "10.1.0.0/16 via 10.0.0.1 if 12 metric 1; ",
                  Shown(list));
        EXPECT_EQ("", Asked());
        EXPECT_TRUE(Run(api, "SetDefaultGateway"));
        EXPECT_TRUE(Asked().starts_with("table; table; create ")) << "it has a table of its own";
    });
}

TEST_F(PreVista, AddressesAreThoseOfTheFirstReading)
{
    InNewProcess([this] {
        oldAddresses = {{::inet_addr("10.0.0.1"), 12, ::inet_addr("255.0.0.0"), 0, 0, 0, 1},
                        {::inet_addr("10.0.0.2"), 11, ::inet_addr("255.255.255.0"), 0, 0, 0, 0xFFFB},
                        {::inet_addr("10.0.0.3"), 11, ::inet_addr("255.255.255.128"), 0, 0, 0, 5}};
        std::vector<TOLVA::ASSOC_IP_ADDR> list(1);
        // A table that cannot be read is no failure.
        AskInVain(
            "GetIpAddrTable", [&] { EXPECT_TRUE(api.GetAdaptersIpAddrs(Adapter(), list)); }, ADDRESSES,
            ADDRESSES + "GetAdaptersIpAddrs : ... ending( Failed to load MIB IP Address table )\n");
        indexCodes = {55};
        EXPECT_TRUE(api.GetAdaptersIpAddrs(Adapter(), list));
        EXPECT_EQ(INDEX_FAILED + ADDRESSES + "GetAdaptersIpAddrs : ... ending( TOLVA::GetAdapterIndex failed )\n",
                  trace.Complaints());
        EXPECT_EQ(1U, list.size());
        Asked();

        oldAddresses.clear();
        EXPECT_TRUE(api.GetAdaptersIpAddrs(Adapter(), list));
        EXPECT_EQ("<invalid>/0 if 0 manual dad 0 scope 0; 10.0.0.2/24 if 11 manual dad 0 scope 0; "
                  "10.0.0.3/25 if 11 automatic dad 0 scope 0; ",
                  Shown(list));
        EXPECT_EQ("", Asked());
        EXPECT_TRUE(trace.Has("[V] PreVistaAPI::GetAdaptersIpAddrs : bRc = true"));
        const auto lines = trace.LinesOf("PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs");
        EXPECT_EQ(Transcript(R"(
[V] PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs : m_pMibIpAddrTable->table[ i ].wType = 0x5
[V] PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs : AssocIpAddr.bAutomatic = true
[V] PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs : sIpAddress = "10.0.0.3"
[V] PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs : AssocIpAddr.SubnetPrefix = 25
[V] PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs : AssocIpAddr.ulIndex = 11
[V] PreVistaAPI::Wrap_MIB_IPADDRTABLE::GetAdaptersIpAddrs : ... ending
)"),
                  std::vector<std::string>(lines.end() - 6, lines.end()));
    });
}

// Numbers of rows that the library made from nothing.
const std::string MADE = ": 0 4 3 0 0 -1 -1 -1 -1; ";

TEST_F(PreVista, AddedRoutes)
{
    const std::string FAILED = "[E] PreVistaAPI::AddAdapterRoute : ... ending";
    dwLowestMetric = 9;
    indexCodes = {55}; // the index is the record's own
    EXPECT_TRUE(Run(api, "AddAdapterRoute"));
    EXPECT_EQ(Series("create 10.0.0.0 & 255.0.0.0 via 10.0.0.1 if 11 metric ", 4, 9, MADE), Asked());
    EXPECT_EQ(Transcript("[V] PreVistaAPI::AddAdapterRoute : starting ...\n" +
                         Series("[V] PreVistaAPI::AddAdapterRoute : forwardRow.dwForwardMetric1 = ", 4, 8, "\n") +
                         "[V] PreVistaAPI::AddAdapterRoute : ... ending"),
              trace.LinesOf("PreVistaAPI::AddAdapterRoute"));
    EXPECT_FALSE(Run(api, "AddAdapterRoute"));
    EXPECT_EQ(FAILED + "(CreateIpForwardEntry failed) : dwRc = 5010\n", trace.Complaints());
    Asked();
    EXPECT_FALSE(api.AddAdapterRoute(Adapter(), Route("fd00::", 8, "10.0.0.1", 4)));
    EXPECT_FALSE(api.AddAdapterRoute(Adapter(), Route("10.0.0.0", 8, "fe80::1", 4)));
    EXPECT_EQ(FAILED + "( Can't set an IPv6 route )\n" + FAILED + "( Can't set an IPv6 route )\n", trace.Complaints());
    EXPECT_EQ("", Asked());
}

TEST_F(PreVista, DefaultGateways)
{
    const std::string DELETE1 = "delete 0.0.0.0 & 0.0.0.0 via 10.0.0.1 if 20; ";
    const std::string DELETE2 = "delete 0.0.0.0 & 255.0.0.0 via 10.0.0.2 if 20; ";
    const std::string NEW = "create 0.0.0.0 & 0.0.0.0 via 10.0.0.9 if 22 metric ";
    const std::string FAILED = "[E] PreVistaAPI::SetDefaultGateway : ... ending";
    const std::string REFUSED = FAILED + "( Wrap_MIB_IPADDRTABLE::DeleteDefaultRoute failed )\n";
    const std::string DELETION = ROUTES + "DeleteDefaultRoute : ... ending";
    const auto Set = [&](unsigned long ulOfAdapter, const Codes& forced, const std::vector<DWORD>& indices,
                         const std::string& sCalls, const std::string& sComplaints = {}) {
        SCOPED_TRACE(sCalls + sComplaints);
        ulIndex = ulOfAdapter;
        codes = forced;
        indexNames.clear();
        indexCodes = indices;
        EXPECT_EQ(sComplaints.empty(), Run(api, "SetDefaultGateway"));
        EXPECT_EQ(sCalls, Asked());
        EXPECT_EQ(sCalls.starts_with(NEW),
                  trace.Has("[V] PreVistaAPI::SetDefaultGateway : No default gateway found, creating new entry"));
        for (int metric = 0; metric <= 4; ++metric)
            EXPECT_EQ(sCalls.ends_with("metric 5" + MADE),
                      trace.Has(Joined("[V] PreVistaAPI::SetDefaultGateway : forwardRow.dwForwardMetric1 = ", metric)));
        EXPECT_EQ(sComplaints, trace.Complaints());
    };
    InNewProcess([&] {
        oldRoutes = {OldRow(20, "0.0.0.0", "0.0.0.0", "10.0.0.1", 7), OldRow(21, "0.0.0.0", "0.0.0.0", "10.0.0.4", 1),
                     OldRow(20, "0.0.0.0", "255.0.0.0", "10.0.0.2", 8), // the mask does not count
                     OldRow(20, "10.0.0.0", "0.0.0.0", "10.0.0.3", 9)};
        Set(20, {{"GetIpForwardTable", {50}}}, {}, "table; ",
            ROUTES + "LoadTable : ... ending( GetIpForwardTable failed ) : dwRc = 50\n" + DELETION +
                "( Failed to load MIB IP Forward table )\n" + REFUSED);
        Set(20, {}, {55}, "table; table; ", INDEX_FAILED + DELETION + "( TOLVA::GetAdapterIndex failed )\n" + REFUSED);
        Set(22, {}, {0, 55}, "", INDEX_FAILED + FAILED + "( TOLVA::getAdapterIndex failed )\n");
        Set(20, {{"DeleteIpForwardEntry", {5}}}, {}, DELETE1,
            DELETION + "(DeleteIpForwardEntry failed) : dwRc = 5\n" + REFUSED);
        Set(20, {}, {},
            DELETE1 + DELETE2 + "create 0.0.0.0 & 255.0.0.0 via 10.0.0.9 if 20 metric 8: 21 22 23 24 25 26 27 28 29; ");
        // The platform knows it no more, but the table that is kept does.
        Set(20, {}, {}, DELETE1, DELETION + "(DeleteIpForwardEntry failed) : dwRc = 1168\n" + REFUSED);
        Set(22, {{"CreateIpForwardEntry", {5010}}}, {}, NEW + "0" + MADE,
            FAILED + "(CreateIpForwardEntry failed) : dwRc = 5010\n");
        Set(22, {{"CreateIpForwardEntry", {160, 160, 160, 160, 160}}}, {}, Series(NEW, 0, 5, MADE));
        // Not refused, but converted as if it were IPv4.
        EXPECT_TRUE(api.SetDefaultGateway(Adapter(), Ip("fe80::9")));
        EXPECT_EQ("create 0.0.0.0 & 0.0.0.0 via 255.255.255.255 if 22 metric 0" + MADE, Asked());
    });
}

TEST_F(PreVista, AddressesAreSetByAFunctionThatMayBeMissing)
{
    const std::string FAILED = "[E] PreVistaAPI::AddIpAddr : ... ending( SetAdapterIpAddress failed";
    const std::string WRAP = "PreVistaAPI::Wrap_IPHLPAPI_DLL::";
    const struct
    {
        const char* pszMissing;
        std::string sComplaint;
        std::string sCalls;
    } rows[] = {
        {"IPHLPAPI.DLL", "LoadLibrary('IPHLPAPI.DLL') failed : dwLastError = 126\n", "load IPHLPAPI.DLL; "},
        {"SetAdapterIpAddress", "GetProcAddress('SetAdapterIpAddress') failed : dwLastError = 127\n",
         "load IPHLPAPI.DLL; SetAdapterIpAddress; "},
    };
    for (const auto& row : rows)
        InNewProcess([&] {
            missing = {row.pszMissing};
            EXPECT_TRUE(api.AddIpAddr(Adapter(), Address("fe80::5")));
            EXPECT_EQ("[W] PreVistaAPI::AddIpAddr : AddIpAddr called with IPv6 address with O/S prior to Vista : "
                      "sIpAddr = \"fe80::5\"\n",
                      trace.Complaints());
            EXPECT_EQ("", Asked());
            EXPECT_FALSE(Run(api, "AddIpAddr"));
            EXPECT_FALSE(Run(api, "AddIpAddr"));
            EXPECT_EQ("[E] " + WRAP + "Wrap_IPHLPAPI_DLL : " + row.sComplaint + FAILED + " ) : dwRc = 1\n" + FAILED +
                          " ) : dwRc = 1\n",
                      trace.Complaints());
            EXPECT_EQ(row.sCalls, Asked());
        });
    InNewProcess([&] {
        codes["SetAdapterIpAddress"] = {0, 52, 5};
        EXPECT_TRUE(api.AddIpAddr(Adapter(), Address("10.20.30.40", 20)));
        EXPECT_TRUE(trace.Has("[V] PreVistaAPI::AddIpAddr : dwIpAddr = 169090600"));
        EXPECT_TRUE(trace.Has("[V] PreVistaAPI::AddIpAddr : dwSubnet = 4294963200"));
        EXPECT_TRUE(trace.Has("[V] " + WRAP + "SetAdapterIpv4Address : SetAdapterIpAddress : dwRc = 0"));
        const std::wstring sLongest(38, L'x');
        EXPECT_FALSE(api.AddIpAddr(Adapter((sLongest + L"yz").c_str()), Address("10.0.0.5", 32)));
        EXPECT_FALSE(Run(api, "AddIpAddr"));
        EXPECT_EQ("load IPHLPAPI.DLL; SetAdapterIpAddress; set {0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C} 0 10.20.30.40 "
                  "255.255.240.0 0; set " +
                      std::string(38, 'x') +
                      " 0 10.0.0.5 255.255.255.255 0; set {0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C} 0 10.0.0.5 "
                      "255.255.255.0 0; ",
                  Asked());
        EXPECT_EQ(FAILED + " - Duplicate IP address? )\n" + FAILED + " ) : dwRc = 5\n", trace.Complaints());
    });
    trace.ExpectLines({"[V] " + WRAP + "~Wrap_IPHLPAPI_DLL : FreeLibrary('IPHLPAPI.DLL')"});
}

/// The old adapter table: a record for each adapter and, with index 0, for each further address of the one before.
/// Contexts count from 1.
DWORD FillAdapters(std::size_t count, IP_ADAPTER_INFO* pBuffer, ULONG* pulSize)
{
    constexpr std::pair<DWORD, const char*> ALL[] = {
        {12, "10.0.0.9"}, {11, "0.0.0.0"}, {0, "10.0.0.5"}, {0, "10.0.0.5"}, {11, "10.0.0.6"}};
    const ULONG ulGiven = std::exchange(*pulSize, static_cast<ULONG>(count * sizeof(IP_ADAPTER_INFO)));
    if (ulGiven < *pulSize)
        return ERROR_BUFFER_OVERFLOW;
    std::memset(pBuffer, 0, *pulSize);
    IP_ADAPTER_INFO* pAdapter = pBuffer;
    for (std::size_t i = 0; i < count; ++i)
    {
        pBuffer[i].Index = ALL[i].first;
        std::strcpy(pBuffer[i].IpAddressList.IpAddress.String, ALL[i].second);
        pBuffer[i].IpAddressList.Context = static_cast<DWORD>(i + 1);
        if (ALL[i].first == 0)
            pBuffer[i - 1].IpAddressList.Next = &pBuffer[i].IpAddressList;
        else if (i > 0)
            pAdapter = pAdapter->Next = &pBuffer[i];
    }
    return NO_ERROR;
}

TEST_F(PreVista, DeletedAddresses)
{
    const std::string FAILED = "[E] PreVistaAPI::DeleteIpAddr : ... ending";
    std::size_t count = 5;
    ADD_PATCH(patches, GetAdaptersInfo, [&](IP_ADAPTER_INFO* pBuffer, ULONG* pulSize) {
        EXPECT_EQ(0U, *pulSize % sizeof(IP_ADAPTER_INFO));
        const DWORD dwForced = Called("GetAdaptersInfo", Joined("ask ", *pulSize / sizeof(IP_ADAPTER_INFO)));
        const DWORD dwTrue = FillAdapters(count, pBuffer, pulSize);
        return dwForced != TRUE_ANSWER ? dwForced : dwTrue;
    });
    ADD_PATCH(patches, DeleteIPAddress,
              [&](ULONG ulContext) { return Called("DeleteIPAddress", Joined("delete ", ulContext)); });
    const auto Delete = [&](const char* pszAddress, const Codes& forced, const std::string& sCalls,
                            const std::string& sComplaint = {}) {
        SCOPED_TRACE(pszAddress + sCalls + sComplaint);
        codes = forced;
        trace.Empty();
        EXPECT_EQ(sComplaint.empty(), api.DeleteIpAddr(Adapter(), Address(pszAddress)));
        EXPECT_EQ(sCalls, Asked());
        EXPECT_EQ(forced.contains("DeleteIPAddress") && forced.at("DeleteIPAddress").front() == 0,
                  trace.Has("[V] PreVistaAPI::DeleteIpAddr : Deleted"));
        EXPECT_EQ(sComplaint.empty() ? "[V] PreVistaAPI::DeleteIpAddr : ... ending" : FAILED + sComplaint,
                  trace.Lines().back());
    };
    Delete("10.0.0.5", {{"DeleteIPAddress", {0}}}, "ask 1; ask 5; delete 3; ");
    Delete("10.0.0.5", {{"DeleteIPAddress", {1168}}}, "ask 1; ask 5; delete 3; ");
    Delete("10.0.0.5", {{"DeleteIPAddress", {87}}}, "ask 1; ask 5; delete 3; ",
           "( DeleteIPAddress failed ) : dwRc = 87");
    Delete("10.0.0.6", {}, "ask 1; ask 5; "); // only the first adapter of the index
    Delete("10.0.0.9", {}, "ask 1; ask 5; ");
    Delete("fe80::5", {}, "ask 1; ask 5; ");
    Delete("10.0.0.5", {{"GetAdaptersInfo", {111, 50}}}, "ask 1; ask 5; ", "(GetAdaptersInfo failed) : dwRc = 50");
    Delete("10.0.0.5", {{"GetAdaptersInfo", {111, 111}}}, "ask 1; ask 5; ", "(GetAdaptersInfo failed) : dwRc = 111");
    Delete("10.0.0.5", {{"GetAdaptersInfo", {232}}}, "ask 1; ", "(GetAdaptersInfo failed) : dwRc = 232");
    count = 1;
    Delete("10.0.0.9", {}, "ask 1; "); // there is no such adapter
    ulIndex = 12;
    Delete("10.0.0.9", {{"DeleteIPAddress", {0}}}, "ask 1; delete 1; ");
    count = 5;
    ulIndex = 11;
    Delete("10.0.0.5", {{"DeleteIPAddress", {31}}}, "ask 1; ask 5; delete 3; ");
    EXPECT_EQ(Transcript(R"(
[V] PreVistaAPI::DeleteIpAddr : starting ...
[V] PreVistaAPI::DeleteIpAddr : ulInterfaceIndex = 11
[V] PreVistaAPI::DeleteIpAddr : pIpAddress->IpAddress.String = "0.0.0.0"
[V] PreVistaAPI::DeleteIpAddr : sThisAddr = "0.0.0.0"
[V] PreVistaAPI::DeleteIpAddr : pIpAddress->IpAddress.String = "10.0.0.5"
[V] PreVistaAPI::DeleteIpAddr : sThisAddr = "10.0.0.5"
[V] PreVistaAPI::DeleteIpAddr : Found matching IPv4 address : ulNteContext = 3
[V] PreVistaAPI::DeleteIpAddr : ... ending
)"),
              trace.LinesOf("PreVistaAPI::DeleteIpAddr"));
    trace.Empty();
    indexNames.clear();
    indexCodes = {55};
    EXPECT_FALSE(Run(api, "DeleteIpAddr"));
    EXPECT_EQ(INDEX_FAILED + FAILED + "( TOLVA::getAdapterIndex failed )\n", trace.Complaints());
}

} // namespace
