#include <algorithm>
#include <cstddef>
#include <functional>
#include <tuple>

#include <adapters/wrap_ip_adapter_addresses.h>

#include "discovery_test.h"

namespace
{

using Table = TOLVA::Wrap_IP_ADAPTER_ADDRESSES;
using Call = FakeAddressTable::Call;

constexpr DWORD INDEX = 11;
constexpr ULONG NO_ANYCAST_NO_MULTICAST = 6;

/// A socket address of any family and stated length, on memory of exactly that length.
class SocketAddress
{
public:
    SocketAddress(ADDRESS_FAMILY family, const char* pszAddress, std::size_t length, DWORD dwScope = 0)
        : m_bytes(length)
    {
        SOCKADDR_INET whole = {};
        if (family == AF_INET6)
        {
            whole.Ipv6.sin6_addr = velmor::ip_address(velmor::string(pszAddress)).sockaddr().Ipv6.sin6_addr;
            whole.Ipv6.sin6_scope_id = dwScope;
        }
        else
            whole.Ipv4.sin_addr = velmor::ip_address(velmor::string(pszAddress)).sockaddr().Ipv4.sin_addr;
        whole.Ipv4.sin_port = 0x3500;
        whole.si_family = family;
        const auto* pBytes = reinterpret_cast<const unsigned char*>(&whole);
        std::copy_n(pBytes, std::min(length, sizeof(whole)), m_bytes.begin());
    }
    operator SOCKET_ADDRESS() noexcept
    {
        return {reinterpret_cast<SOCKADDR*>(m_bytes.data()), static_cast<INT>(m_bytes.size())};
    }

private:
    std::vector<unsigned char> m_bytes;
};

using AddressTable = DiscoveryTest;

template <class Asked>
struct Question
{
    const char* pszName;
    std::function<bool(Asked)> ask;
};

/// The member's question about the adapter with INDEX, its answers thrown away.
template <class... Out>
Question<Table&> Member(const char* pszName, bool (Table::*pMember)(unsigned long, Out&...))
{
    return {pszName, [=](Table& table) {
                std::tuple<Out...> answers{};
                return std::apply([&](Out&... out) { return (table.*pMember)(INDEX, out...); }, answers);
            }};
}
template <class... Out>
Question<const TOLVA::NIC_INFO&> Operation(const char* pszName, bool (*pOperation)(const TOLVA::NIC_INFO&, Out&...))
{
    return {pszName, [=](const TOLVA::NIC_INFO& NicInfo) {
                std::tuple<Out...> answers{};
                return std::apply([&](Out&... out) { return pOperation(NicInfo, out...); }, answers);
            }};
}

const Question<Table&> MEMBERS[] = {
    Member("GetAdapterFriendlyName", &Table::GetAdapterFriendlyName),
    Member("GetAdapterOperStatus", &Table::GetAdapterOperStatus),
    Member("GetAdapterType", &Table::GetAdapterType),
    Member("GetAddressFamilySupported", &Table::GetAddressFamilySupported),
    Member<velmor::ip_address>("GetDhcpServer", &Table::GetDhcpServer),
    Member<unsigned long, velmor::string>("GetDhcpServer", &Table::GetDhcpServer),
    Member("GetDnsServerList", &Table::GetDnsServerList),
    Member("GetHardwareAddress", &Table::GetHardwareAddress),
};

TEST_F(AddressTable, HowTheTableIsLoaded)
{
    constexpr ULONG WHOLE = sizeof(IP_ADAPTER_ADDRESSES); // does not fit into the first 440 bytes
    const std::string sName = "TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable : ";
    const struct
    {
        unsigned int family;
        ULONG ulFamilyAsked;
        const char* pszFamily;
        std::vector<DWORD> codes; ///< the last one is the result
        std::vector<ULONG> sizes;
    } rows[] = {
        {0, 0, "IPv4 and IPv6", {111, 0}, {440, WHOLE}},
        {2, 2, "IPv4", {111, 0}, {440, WHOLE}},
        {23, 23, "IPv6", {111, 0}, {440, WHOLE}},
        {99, 0, "IPv4 and IPv6", {111, 0}, {440, WHOLE}},
        {0, 0, "IPv4 and IPv6", {232}, {440}},
        {0, 0, "IPv4 and IPv6", {122}, {440}},
        {0, 0, "IPv4 and IPv6", {111, 8}, {440, WHOLE}},
        {0, 0, "IPv4 and IPv6", {111, 111}, {440, WHOLE}}, // grown between the calls: there is no third
    };
    for (const auto& row : rows)
    {
        addresses = {};
        addresses.Add(INDEX);
        addresses.codes = row.codes;
        trace.Empty();
        Table table(static_cast<TOLVA::FAMILY_TYPE>(row.family));
        EXPECT_EQ(row.codes.back() == NO_ERROR, table.LoadTable());
        std::vector<Call> calls;
        for (const ULONG ulGiven : row.sizes)
            calls.push_back({row.ulFamilyAsked, NO_ANYCAST_NO_MULTICAST, ulGiven});
        EXPECT_TRUE(calls == addresses.calls);
        const std::string sFailure = "... ending( GetAdaptersAddresses failed ) : ulRc = ";
        trace.ExpectLines({"[V] " + sName + "starting ...", "[V] " + sName + row.pszFamily,
                           row.codes.back() == NO_ERROR
                               ? "[V] " + sName + "... ending"
                               : "[E] " + sName + sFailure + std::to_string(row.codes.back())});
    }
}

TEST_F(AddressTable, OneCopyServesUntilItIsLoadedAgain)
{
    addresses.Add(INDEX).IfType = IF_TYPE_FDDI;
    addresses.entries[0].ulLength = 440; // a table that fits at once
    Table table(TOLVA::FAMILY_BOTH);
    velmor::string sType;
    EXPECT_TRUE(table.GetAdapterType(INDEX, sType));
    EXPECT_FALSE(table.GetAdapterType(INDEX + 1, sType));
    EXPECT_EQ(1U, addresses.calls.size());

    addresses.entries[0].record.IfType = IF_TYPE_PPP;
    addresses.codes = {0, 0, 5};
    EXPECT_TRUE(table.LoadTable());
    EXPECT_TRUE(table.GetAdapterType(INDEX, sType));
    EXPECT_EQ(L"PPP", Text(sType));
    EXPECT_FALSE(table.LoadTable());
    EXPECT_TRUE(table.GetAdapterType(INDEX, sType)) << "after a failure the next question loads";
    EXPECT_EQ(4U, addresses.calls.size());
}

TEST_F(AddressTable, QuestionsThatFindNothing)
{
    for (const auto& [pszMember, ask] : MEMBERS)
    {
        SCOPED_TRACE(pszMember);
        const std::string sName = std::string("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::") + pszMember;
        addresses = {};
        addresses.Add(INDEX + 1);
        trace.Empty();
        Table table(TOLVA::FAMILY_BOTH);
        EXPECT_FALSE(ask(table));
        EXPECT_TRUE(trace.Has("[V] " + sName + " : ... ending : bFound = false"));

        addresses.codes = {0, 0, 5};
        trace.Empty();
        Table unloadable(TOLVA::FAMILY_BOTH);
        EXPECT_FALSE(ask(unloadable));
        EXPECT_EQ("[E] " + sName + " : ... ending( Failed to load IP_ADAPTER_ADDRESSES table )", trace.Lines().back());
    }
}

TEST_F(AddressTable, ADhcpQuestionNeedsATableOfItsFamily)
{
    const struct
    {
        TOLVA::FAMILY_TYPE enFamily;
        bool bIPv4, bIPv6;
    } rows[] = {{TOLVA::FAMILY_BOTH, true, true}, {TOLVA::FAMILY_IPV4, true, false}, {TOLVA::FAMILY_IPV6, false, true}};
    for (const auto& row : rows)
    {
        addresses = {};
        addresses.Add(INDEX);
        velmor::ip_address server;
        unsigned long ulIAID = 0;
        velmor::string sDUID;
        trace.Empty();
        Table first(row.enFamily);
        EXPECT_EQ(row.bIPv4, first.GetDhcpServer(INDEX, server));
        EXPECT_EQ(row.bIPv4, !addresses.calls.empty()) << "before any table is loaded";
        addresses.calls.clear();
        Table second(row.enFamily);
        EXPECT_EQ(row.bIPv6, second.GetDhcpServer(INDEX, ulIAID, sDUID));
        EXPECT_EQ(row.bIPv6, !addresses.calls.empty());
        EXPECT_EQ(!row.bIPv4 || !row.bIPv6, trace.Has("[E] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer : "
                                                      "... ending( Wrong Wrap_IP_ADAPTER_ADDRESSES used )"));
    }
}

TEST_F(AddressTable, InterfaceTypes)
{
    const std::pair<IFTYPE, const wchar_t*> rows[] = {
        {6, L"ETHERNET"}, {9, L"TOKENRING"}, {15, L"FDDI"}, {23, L"PPP"},    {24, L"LOOPBACK"},
        {28, L"SLIP"},    {71, L"OTHER"},    {0, L"OTHER"}, {131, L"OTHER"}, {0xFFFFFFFF, L"OTHER"}};
    for (const auto& [type, pszText] : rows)
    {
        addresses = {};
        addresses.Add(1).IfType = 7; // the entry before must not be taken for it
        addresses.Add(INDEX).IfType = type;
        Table table(TOLVA::FAMILY_BOTH);
        velmor::string sType;
        EXPECT_TRUE(table.GetAdapterType(INDEX, sType));
        EXPECT_EQ(pszText, Text(sType)) << type;
    }
}

TEST_F(AddressTable, OperationalStates)
{
    const char* const NAMES[] = {
        nullptr, "UP", "DOWN", "TESTING", "UNKNOWN", "DORMANT", "NOT_PRESENT", "LOWER_LAYER_DOWN", nullptr};
    const std::string sName = "TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus : ";
    for (unsigned int status = 0; status < std::size(NAMES); ++status)
    {
        addresses = {};
        addresses.Add(INDEX).OperStatus = static_cast<IF_OPER_STATUS>(status);
        trace.Empty();
        Table table(TOLVA::FAMILY_BOTH);
        constexpr auto NONE = static_cast<TOLVA::TOLVA_OPER_STATUS>(77);
        TOLVA::TOLVA_OPER_STATUS enStatus = NONE;
        EXPECT_EQ(NAMES[status] != nullptr, table.GetAdapterOperStatus(INDEX, enStatus));
        EXPECT_EQ(NAMES[status] != nullptr ? status : NONE, static_cast<unsigned int>(enStatus));
        const std::vector<std::string> lines = trace.Lines();
        if (NAMES[status] != nullptr)
        {
            EXPECT_EQ("[I] " + sName + "TOLVA::OPER_STATUS_" + NAMES[status], lines.at(lines.size() - 2));
            EXPECT_EQ("[V] " + sName + "... ending : bFound = true", lines.back());
        }
        else
            EXPECT_EQ("[E] " + sName + "... ending( Unknown operational status ) : pCurrAddresses->OperStatus = " +
                          std::to_string(status),
                      lines.back());
    }
}

TEST_F(AddressTable, FamiliesOfAnAdapter)
{
    const struct
    {
        DWORD dwIndex, dwIpv6Index;
        unsigned int family;
        const char* pszMiddle;
    } rows[] = {
        {INDEX, 11, 0,
         "[V] %s : IPv4 supported\n[V] %s : IPv6 supported\n[V] %s : ... ending( Both IPv4 and IPv6 supported )\n"},
        {INDEX, 0, 2, "[V] %s : IPv4 supported\n[V] %s : ... ending( IPv4 supported )\n"},
        {0, 11, 23, "[V] %s : IPv6 supported\n[V] %s : ... ending( IPv6 supported )\n"},
        {0, 0, 99, "[E] %s : ... ending( Neither IPv4 nor IPv6 supported )\n"},
    };
    for (const auto& row : rows)
    {
        addresses = {};
        addresses.Add(row.dwIndex).Ipv6IfIndex = row.dwIpv6Index;
        Table table(TOLVA::FAMILY_BOTH);
        ASSERT_TRUE(table.LoadTable());
        trace.Empty();
        auto enFamily = static_cast<TOLVA::FAMILY_TYPE>(99);
        EXPECT_EQ(row.family != 99, table.GetAddressFamilySupported(row.dwIndex, enFamily));
        EXPECT_EQ(row.family, static_cast<unsigned int>(enFamily));
        std::string sTranscript = "[V] %s : starting ...\n[V] %s : ulIndex = " + std::to_string(row.dwIndex) + "\n" +
                                  row.pszMiddle + (row.family != 99 ? "[V] %s : ... ending : bFound = true\n" : "");
        while (sTranscript.find("%s") != std::string::npos)
            sTranscript.replace(sTranscript.find("%s"), 2,
                                "TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAddressFamilySupported");
        trace.ExpectLines(Transcript(sTranscript));
    }
}

TEST_F(AddressTable, AnEmptyFriendlyNameChangesNothing)
{
    for (const wchar_t* pszName : {static_cast<const wchar_t*>(nullptr), L"", L"LAN"})
    {
        addresses = {};
        addresses.Add(INDEX).FriendlyName = const_cast<wchar_t*>(pszName);
        Table table(TOLVA::FAMILY_BOTH);
        velmor::string sName(L"before");
        EXPECT_TRUE(table.GetAdapterFriendlyName(INDEX, sName));
        EXPECT_EQ(pszName != nullptr && *pszName != L'\0' ? L"LAN" : L"before", Text(sName));
    }
}

TEST_F(AddressTable, Dhcpv4Server)
{
    SocketAddress good(AF_INET, "10.0.0.1", sizeof(SOCKADDR_IN));
    SocketAddress shortened(AF_INET, "10.0.0.1", 7);
    SocketAddress foreign(AF_IPX, "10.0.0.1", sizeof(SOCKADDR_IN));
    SocketAddress tiny(AF_INET, "10.0.0.1", 1);
    const struct
    {
        SOCKET_ADDRESS server;
        const char* pszServer;
    } rows[] = {{{nullptr, 0}, "0.0.0.0"}, {{nullptr, 16}, "0.0.0.0"}, {good, "10.0.0.1"},
                {shortened, "0.0.0.0"},    {foreign, "0.0.0.0"},       {tiny, "0.0.0.0"}};
    for (const auto& row : rows)
    {
        addresses = {};
        addresses.Add(INDEX).Dhcpv4Server = row.server;
        trace.Empty();
        Table table(TOLVA::FAMILY_IPV4);
        velmor::ip_address server(velmor::string("9.9.9.9"));
        EXPECT_TRUE(table.GetDhcpServer(INDEX, server));
        EXPECT_STREQ(row.pszServer, velmor::string(server).narrow_c_str());
        const std::string sBytes = trace.Bytes();
        EXPECT_EQ(row.server.lpSockaddr != nullptr,
                  sBytes.find("pCurrAddresses->Dhcpv4Server.lpSockaddr") != sBytes.npos);
        EXPECT_TRUE(trace.Has("[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer : sDhcpServerAddr = \"" +
                              std::string(row.pszServer) + '"'));
    }
}

TEST_F(AddressTable, Dhcpv6Client)
{
    std::string sLongest = "00";
    for (int i = 1; i < MAX_DHCPV6_DUID_LENGTH; ++i)
        sLongest += "-00";
    sLongest.replace(0, 17, "00-01-00-01-1A-FF");
    const std::pair<ULONG, std::string> rows[] = {
        {0, ""}, {1, "00"}, {5, "00-01-00-01-1A"}, {MAX_DHCPV6_DUID_LENGTH, sLongest}, {0xFFFFFFFF, sLongest}};
    SocketAddress server(AF_INET6, "fe80::1", sizeof(SOCKADDR_IN6));
    for (const auto& [ulLength, sExpected] : rows)
    {
        addresses = {};
        IP_ADAPTER_ADDRESSES& record = addresses.Add(INDEX);
        const BYTE duid[] = {0, 1, 0, 1, 26, 255};
        std::copy(std::begin(duid), std::end(duid), record.Dhcpv6ClientDuid);
        record.Dhcpv6ClientDuidLength = ulLength;
        record.Dhcpv6Iaid = 0xFEDCBA98;
        record.Flags = 0xBC;
        record.Dhcpv6Server = server;
        trace.Empty();
        Table table(TOLVA::FAMILY_IPV6);
        unsigned long ulIAID = 0;
        velmor::string sDUID(L"before");
        EXPECT_TRUE(table.GetDhcpServer(INDEX, ulIAID, sDUID));
        EXPECT_EQ(0xFEDCBA98, ulIAID);
        EXPECT_STREQ(sExpected.c_str(), sDUID.narrow_c_str());
        const std::string sName = "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer : ";
        for (const std::string& sLine : {std::string("pCurrAddresses->Flags = 0xBC"),
                                         std::string("dwIAID = 4275878552"), "sDUID = \"" + sExpected + '"'})
            EXPECT_TRUE(trace.Has(sName + sLine)) << sLine;
    }
}

TEST_F(AddressTable, DnsServers)
{
    SocketAddress servers[] = {
        {AF_INET, "192.0.2.53", sizeof(SOCKADDR_IN)},        {AF_IPX, "192.0.2.1", sizeof(SOCKADDR_IN)},
        {AF_INET6, "fe80::53", sizeof(SOCKADDR_IN6), 11},    {AF_INET, "192.0.2.2", sizeof(SOCKADDR_IN) - 1},
        {AF_INET6, "2001:db8::1", sizeof(SOCKADDR_IN6) - 1}, {AF_INET6, "2001:db8::53", sizeof(SOCKADDR_IN6)},
    };
    std::vector<IP_ADAPTER_DNS_SERVER_ADDRESS> nodes(std::size(servers) + 1); // the last has no address at all
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i)
    {
        nodes[i].Address = servers[i];
        nodes[i].Next = &nodes[i + 1];
    }
    addresses.Add(INDEX).FirstDnsServerAddress = nodes.data();

    Table table(TOLVA::FAMILY_BOTH);
    std::vector<velmor::ip_address> list = {velmor::ip_address(velmor::string("10.0.0.1"))};
    EXPECT_TRUE(table.GetDnsServerList(INDEX, list));
    std::vector<std::string> texts;
    for (const velmor::ip_address& server : list)
        texts.emplace_back(velmor::string(server).narrow_c_str());
    EXPECT_EQ((std::vector<std::string>{"10.0.0.1", "192.0.2.53", "fe80::53", "2001:db8::53"}), texts);
    EXPECT_EQ(0U, list.at(2).sockaddr().Ipv6.sin6_scope_id);
    EXPECT_EQ(0U, list.at(1).sockaddr().Ipv4.sin_port);
    const std::string sName = "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDnsServerList : ";
    EXPECT_TRUE(trace.Has(sName + "sDns = \"fe80::53\""));
    EXPECT_TRUE(trace.Has(sName + "uiDnsServerCount = 4"));
}

TEST_F(AddressTable, HardwareAddresses)
{
    const std::pair<ULONG, const wchar_t*> rows[] = {
        {0, L""}, {6, L"01-02-03-04-05-06"}, {8, L"01-02-03-04-05-06-07-08"}, {0xFFFFFFFF, L"01-02-03-04-05-06-07-08"}};
    for (const auto& [ulLength, pszText] : rows)
    {
        addresses = {};
        IP_ADAPTER_ADDRESSES& record = addresses.Add(INDEX);
        for (BYTE i = 0; i < MAX_ADAPTER_ADDRESS_LENGTH; ++i)
            record.PhysicalAddress[i] = static_cast<BYTE>(i + 1);
        record.PhysicalAddressLength = ulLength;
        trace.Empty();
        Table table(TOLVA::FAMILY_BOTH);
        const BYTE before[] = {9, 9, 9, 9, 9, 9};
        TOLVA::HARDWARE_ADDRESS address(before, sizeof(before));
        EXPECT_TRUE(table.GetHardwareAddress(INDEX, address));
        EXPECT_EQ(pszText, Text(address)) << ulLength;
        EXPECT_EQ(ulLength == 0, trace.Has("[E] TOLVA::HARDWARE_ADDRESS::HARDWARE_ADDRESS : "
                                           "Invalid byte array and/or count arguments"));
    }
}

/// Older systems give shorter records. What would lie beyond their end must not be read.
TEST_F(AddressTable, RecordsOfOlderSystems)
{
    const struct
    {
        std::size_t length;
        TOLVA::FAMILY_TYPE enFamily;
    } rows[] = {{offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex), TOLVA::FAMILY_IPV4},
                {offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex) + 3, TOLVA::FAMILY_IPV4},
                {offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex) + sizeof(DWORD), TOLVA::FAMILY_BOTH},
                {sizeof(IP_ADAPTER_ADDRESSES_XP), TOLVA::FAMILY_BOTH},
                {offsetof(IP_ADAPTER_ADDRESSES, Dhcpv4Server) + sizeof(void*), TOLVA::FAMILY_BOTH}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.length);
        addresses = {};
        IP_ADAPTER_ADDRESSES& record = addresses.Add(INDEX);
        record.PhysicalAddressLength = 6;
        addresses.entries[0].ulLength = static_cast<ULONG>(row.length);
        Table table(TOLVA::FAMILY_BOTH);
        for (const auto& [pszMember, ask] : MEMBERS)
            EXPECT_TRUE(ask(table)) << pszMember;
        TOLVA::FAMILY_TYPE enFamily = TOLVA::FAMILY_IPV6;
        EXPECT_TRUE(table.GetAddressFamilySupported(INDEX, enFamily));
        EXPECT_EQ(row.enFamily, enFamily);
        velmor::ip_address server(velmor::string("9.9.9.9"));
        EXPECT_TRUE(table.GetDhcpServer(INDEX, server));
        EXPECT_STREQ("0.0.0.0", velmor::string(server).narrow_c_str());
        unsigned long ulIAID = 7;
        velmor::string sDUID(L"before");
        EXPECT_TRUE(table.GetDhcpServer(INDEX, ulIAID, sDUID));
        EXPECT_EQ(0U, ulIAID);
        EXPECT_TRUE(sDUID.empty());
    }
}

/// The façade's questions: how each fails, and which family it asks the platform for.
TEST_F(AddressTable, TheOperationsAroundTheQuestions)
{
    const struct
    {
        Question<const TOLVA::NIC_INFO&> operation;
        const char* pszMember;
        ULONG ulFamily;
    } rows[] = {
        {Operation("GetAdapterOperStatus", &TOLVA::GetAdapterOperStatus), "GetAdapterOperStatus", 0},
        {Operation("AddressFamilySupported", &TOLVA::AddressFamilySupported), "GetAddressFamilySupported", 0},
        {Operation("GetHardwareAddress", &TOLVA::GetHardwareAddress), "GetHardwareAddress", 0},
        {Operation<velmor::ip_address>("GetDhcpServer", &TOLVA::GetDhcpServer), "GetDhcpServer", 2},
        {Operation<unsigned long, velmor::string>("GetDhcpServer", &TOLVA::GetDhcpServer), "GetDhcpServer", 23},
        {Operation("GetDnsServerList", &TOLVA::GetDnsServerList), "GetDnsServerList", 0},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.operation.pszName);
        const std::string sName = std::string("TOLVA::") + row.operation.pszName + " : ";
        addresses = {};
        addresses.Add(INDEX);

        trace.Empty();
        EXPECT_TRUE(row.operation.ask(Adapter()));
        EXPECT_EQ("[V] " + sName + "... ending", trace.Lines().back());
        EXPECT_EQ(row.ulFamily, addresses.calls.at(0).ulFamily);

        trace.Empty();
        EXPECT_FALSE(row.operation.ask(Adapter(L"")));
        trace.ExpectLines({"[V] " + sName + "starting ...", "[E] " + sName + "... ending( Bad NIC GUID )"});

        indexCodes.assign(indexNames.size() + 1, ERROR_INVALID_PARAMETER);
        trace.Empty();
        EXPECT_FALSE(row.operation.ask(Adapter()));
        EXPECT_EQ("[E] " + sName + "... ending( TOLVA::GetAdapterIndex failed )", trace.Lines().back());

        trace.Empty();
        addresses.entries[0].record.IfIndex = INDEX + 1;
        EXPECT_FALSE(row.operation.ask(Adapter()));
        EXPECT_EQ("[E] " + sName + "... ending( Wrap_IP_ADAPTER_ADDRESSES::" + row.pszMember + "() failed )",
                  trace.Lines().back());
    }
}

} // namespace
