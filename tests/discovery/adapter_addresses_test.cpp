#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <tuple>

#include <adapters/wrap_ip_adapter_addresses.h>

#include "discovery_test.h"

namespace
{

using Table = TOLVA::Wrap_IP_ADAPTER_ADDRESSES;

constexpr DWORD INDEX = 11;

/// A socket address of any family and stated length, on memory of exactly the family's length.
class SocketAddress
{
public:
    SocketAddress(ADDRESS_FAMILY family, const char* pszAddress, std::size_t length, DWORD dwScope = 0)
        : m_bytes(family == AF_INET6 ? sizeof(SOCKADDR_IN6) : sizeof(SOCKADDR_IN)), m_length(static_cast<INT>(length))
    {
        SOCKADDR_INET whole = velmor::ip_address(velmor::string(pszAddress)).sockaddr();
        if (family == AF_INET6)
            whole.Ipv6.sin6_scope_id = dwScope;
        whole.Ipv4.sin_port = 0x3500;
        whole.si_family = family;
        const auto* pBytes = reinterpret_cast<const unsigned char*>(&whole);
        std::copy_n(pBytes, m_bytes.size(), m_bytes.begin());
    }
    operator SOCKET_ADDRESS() noexcept { return {reinterpret_cast<SOCKADDR*>(m_bytes.data()), m_length}; }

private:
    std::vector<unsigned char> m_bytes;
    INT m_length;
};

class AddressTable : public DiscoveryTest
{
protected:
    /// Makes an adapter the only one, and the trace empty.
    IP_ADAPTER_ADDRESSES& Only(DWORD dwIndex = INDEX)
    {
        addresses = {};
        trace.Empty();
        return addresses.Add(dwIndex);
    }

    Table table{TOLVA::FAMILY_BOTH}; ///< not loaded yet
};

/// A question of the façade, its answers thrown away.
struct Operation
{
    template <class... Out>
    Operation(const char* pszOperation, const char* pszOfTable, ULONG ulFamilyAsked,
              bool (*pOperation)(const TOLVA::NIC_INFO&, Out&...))
        : sName(pszOperation), sMember(pszOfTable), ulFamily(ulFamilyAsked), ask([=](const TOLVA::NIC_INFO& NicInfo) {
              std::tuple<Out...> answers{};
              return std::apply([&](Out&... out) { return pOperation(NicInfo, out...); }, answers);
          })
    {
    }

    std::string sName;
    std::string sMember; ///< of the table
    ULONG ulFamily;
    std::function<bool(const TOLVA::NIC_INFO&)> ask;
};

const Operation OPERATIONS[] = {
    {"GetAdapterOperStatus", "GetAdapterOperStatus", 0, &TOLVA::GetAdapterOperStatus},
    {"AddressFamilySupported", "GetAddressFamilySupported", 0, &TOLVA::AddressFamilySupported},
    {"GetHardwareAddress", "GetHardwareAddress", 0, &TOLVA::GetHardwareAddress},
    {"GetDhcpServer", "GetDhcpServer", 2,
     static_cast<bool (*)(const TOLVA::NIC_INFO&, velmor::ip_address&)>(&TOLVA::GetDhcpServer)},
    {"GetDhcpServer", "GetDhcpServer", 23,
     static_cast<bool (*)(const TOLVA::NIC_INFO&, unsigned long&, velmor::string&)>(&TOLVA::GetDhcpServer)},
    {"GetDnsServerList", "GetDnsServerList", 0, &TOLVA::GetDnsServerList},
};

TEST_F(AddressTable, HowTheTableIsLoaded)
{
    constexpr ULONG WHOLE = sizeof(IP_ADAPTER_ADDRESSES); // does not fit into the first 440 bytes
    const struct
    {
        unsigned int family;
        ULONG ulFamilyAsked;
        std::string sFamily;
        std::vector<DWORD> codes; ///< the last one is the result
    } rows[] = {{0, 0, "IPv4 and IPv6", {111, 0}},  {2, 2, "IPv4", {111, 0}},           {23, 23, "IPv6", {111, 0}},
                {99, 0, "IPv4 and IPv6", {111, 0}}, {0, 0, "IPv4 and IPv6", {232}},     {0, 0, "IPv4 and IPv6", {122}},
                {0, 0, "IPv4 and IPv6", {111, 8}},  {0, 0, "IPv4 and IPv6", {111, 111}}}; // grown between the calls:
                                                                                          // there is no third
    for (const auto& row : rows)
    {
        Only();
        addresses.codes = row.codes;
        Table loaded(static_cast<TOLVA::FAMILY_TYPE>(row.family));
        EXPECT_EQ(row.codes.back() == NO_ERROR, loaded.LoadTable());
        std::vector<FakeAddressTable::Call> calls = {{row.ulFamilyAsked, 6, 440}};
        if (row.codes.size() > 1)
            calls.push_back({row.ulFamilyAsked, 6, WHOLE});
        EXPECT_TRUE(calls == addresses.calls);
        const std::string sEnd =
            row.codes.back() == NO_ERROR
                ? "[V] @ : ... ending"
                : "[E] @ : ... ending( GetAdaptersAddresses failed ) : ulRc = " + std::to_string(row.codes.back());
        trace.ExpectLines(Transcript("[V] @ : starting ...\n[V] @ : " + row.sFamily + '\n' + sEnd,
                                     "TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable"));
    }
}

TEST_F(AddressTable, OneCopyServesUntilItIsLoadedAgain)
{
    Only().IfType = IF_TYPE_FDDI;
    addresses.entries[0].ulLength = 440; // a table that fits at once
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

TEST_F(AddressTable, ADhcpQuestionNeedsATableOfItsFamily)
{
    velmor::ip_address server;
    unsigned long ulIAID = 0;
    velmor::string sDUID;
    for (const auto enFamily : {TOLVA::FAMILY_BOTH, TOLVA::FAMILY_IPV4, TOLVA::FAMILY_IPV6})
    {
        Only();
        EXPECT_EQ(enFamily != TOLVA::FAMILY_IPV6, Table(enFamily).GetDhcpServer(INDEX, server));
        EXPECT_EQ(enFamily == TOLVA::FAMILY_IPV6, addresses.calls.empty()) << "before any table is loaded";
        addresses.calls.clear();
        EXPECT_EQ(enFamily != TOLVA::FAMILY_IPV4, Table(enFamily).GetDhcpServer(INDEX, ulIAID, sDUID));
        EXPECT_EQ(enFamily == TOLVA::FAMILY_IPV4, addresses.calls.empty());
        EXPECT_EQ(enFamily == TOLVA::FAMILY_BOTH ? ""
                                                 : "[E] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer : "
                                                   "... ending( Wrong Wrap_IP_ADAPTER_ADDRESSES used )\n",
                  trace.Complaints());
    }
}

TEST_F(AddressTable, InterfaceTypes)
{
    const std::pair<IFTYPE, const wchar_t*> rows[] = {
        {6, L"ETHERNET"}, {9, L"TOKENRING"}, {15, L"FDDI"}, {23, L"PPP"},    {24, L"LOOPBACK"},
        {28, L"SLIP"},    {71, L"OTHER"},    {0, L"OTHER"}, {131, L"OTHER"}, {0xFFFFFFFF, L"OTHER"}};
    for (const auto& [type, pszText] : rows)
    {
        Only(1).IfType = 7; // the entry before must not be taken for it
        addresses.Add(INDEX).IfType = type;
        table.LoadTable();
        velmor::string sType;
        EXPECT_TRUE(table.GetAdapterType(INDEX, sType));
        EXPECT_EQ(pszText, Text(sType)) << type;
    }
}

TEST_F(AddressTable, OperationalStates)
{
    const char* const NAMES[] = {"", "UP", "DOWN", "TESTING", "UNKNOWN", "DORMANT", "NOT_PRESENT", "LOWER_LAYER_DOWN",
                                 ""};
    const std::string NAME = "] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus : ";
    for (unsigned int status = 0; status < std::size(NAMES); ++status)
    {
        const bool bKnown = *NAMES[status] != '\0';
        Only().OperStatus = static_cast<IF_OPER_STATUS>(status);
        table.LoadTable();
        constexpr auto NONE = static_cast<TOLVA::TOLVA_OPER_STATUS>(77);
        TOLVA::TOLVA_OPER_STATUS enStatus = NONE;
        EXPECT_EQ(bKnown, table.GetAdapterOperStatus(INDEX, enStatus));
        EXPECT_EQ(bKnown ? status : NONE, static_cast<unsigned int>(enStatus));
        EXPECT_EQ(bKnown, trace.Has("[I" + NAME + "TOLVA::OPER_STATUS_" + NAMES[status]));
        EXPECT_EQ(bKnown ? "[V" + NAME + "... ending : bFound = true"
                         : "[E" + NAME + "... ending( Unknown operational status ) : pCurrAddresses->OperStatus = " +
                               std::to_string(status),
                  trace.Lines().back());
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
         "[V] @ : IPv4 supported\n[V] @ : IPv6 supported\n[V] @ : ... ending( Both IPv4 and IPv6 supported )\n"},
        {INDEX, 0, 2, "[V] @ : IPv4 supported\n[V] @ : ... ending( IPv4 supported )\n"},
        {0, 11, 23, "[V] @ : IPv6 supported\n[V] @ : ... ending( IPv6 supported )\n"},
        {0, 0, 99, "[E] @ : ... ending( Neither IPv4 nor IPv6 supported )\n"},
    };
    for (const auto& row : rows)
    {
        Only(row.dwIndex).Ipv6IfIndex = row.dwIpv6Index;
        table.LoadTable();
        trace.Empty();
        auto enFamily = static_cast<TOLVA::FAMILY_TYPE>(99);
        EXPECT_EQ(row.family != 99, table.GetAddressFamilySupported(row.dwIndex, enFamily));
        EXPECT_EQ(row.family, static_cast<unsigned int>(enFamily));
        trace.ExpectLines(Transcript("[V] @ : starting ...\n[V] @ : ulIndex = " + std::to_string(row.dwIndex) + '\n' +
                                         row.pszMiddle + (row.family != 99 ? "[V] @ : ... ending : bFound = true" : ""),
                                     "TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAddressFamilySupported"));
    }
}

TEST_F(AddressTable, AnEmptyFriendlyNameChangesNothing)
{
    for (const wchar_t* pszName : {static_cast<const wchar_t*>(nullptr), L""})
    {
        Only().FriendlyName = const_cast<wchar_t*>(pszName);
        table.LoadTable();
        velmor::string sName(L"before");
        EXPECT_TRUE(table.GetAdapterFriendlyName(INDEX, sName));
        EXPECT_EQ(L"before", Text(sName));
    }
}

TEST_F(AddressTable, Dhcpv4Server)
{
    SocketAddress good(AF_INET, "10.0.0.1", sizeof(SOCKADDR_IN));
    SocketAddress shortened(AF_INET, "10.0.0.1", 7);
    for (const SOCKET_ADDRESS& address :
         std::initializer_list<SOCKET_ADDRESS>{{nullptr, 0}, {nullptr, 16}, good, shortened})
    {
        const std::string sExpected = address.lpSockaddr != nullptr ? "10.0.0.1" : "0.0.0.0";
        Only().Dhcpv4Server = address;
        table.LoadTable();
        velmor::ip_address server(velmor::string("9.9.9.9"));
        EXPECT_TRUE(table.GetDhcpServer(INDEX, server));
        EXPECT_STREQ(sExpected.c_str(), velmor::string(server).narrow_c_str());
        EXPECT_EQ(address.lpSockaddr != nullptr,
                  trace.Bytes().find("pCurrAddresses->Dhcpv4Server.lpSockaddr") != std::string::npos);
        EXPECT_TRUE(
            trace.Has("[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer : sDhcpServerAddr = \"" + sExpected + '"'));
    }
}

TEST_F(AddressTable, Dhcpv6Client)
{
    std::string sLongest = "00-01-00-01-1A-FF";
    for (int i = 6; i < MAX_DHCPV6_DUID_LENGTH; ++i)
        sLongest += "-00";
    const std::pair<ULONG, std::string> rows[] = {
        {0, ""}, {1, "00"}, {5, "00-01-00-01-1A"}, {MAX_DHCPV6_DUID_LENGTH, sLongest}, {0xFFFFFFFF, sLongest}};
    for (const auto& [ulLength, sExpected] : rows)
    {
        IP_ADAPTER_ADDRESSES& record = Only();
        std::ranges::copy(std::to_array<BYTE>({0, 1, 0, 1, 26, 255}), record.Dhcpv6ClientDuid);
        record.Dhcpv6ClientDuidLength = ulLength;
        record.Dhcpv6Iaid = 0xFEDCBA98;
        record.Flags = 0xBC;
        table.LoadTable();
        unsigned long ulIAID = 0;
        velmor::string sDUID(L"before");
        EXPECT_TRUE(table.GetDhcpServer(INDEX, ulIAID, sDUID));
        EXPECT_EQ(0xFEDCBA98, ulIAID);
        EXPECT_STREQ(sExpected.c_str(), sDUID.narrow_c_str());
        EXPECT_EQ(Transcript("[V] @ : starting ...\n[V] @ : pCurrAddresses->Flags = 0xBC\n[V] @ : dwIAID = 4275878552\n"
                             "[V] @ : sDUID = \"" +
                                 sExpected + "\"\n[V] @ : ... ending : bFound = true",
                             "TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer"),
                  trace.LinesOf("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer"));
    }
}

TEST_F(AddressTable, DnsServers)
{
    SocketAddress servers[] = {
        {AF_INET, "192.0.2.53", sizeof(SOCKADDR_IN)},
        {AF_IPX, "192.0.2.1", sizeof(SOCKADDR_IN)},
        {AF_INET6, "fe80::53", sizeof(SOCKADDR_IN6), 11},
        {AF_INET6, "2001:db8::53", 0},
    };
    std::vector<IP_ADAPTER_DNS_SERVER_ADDRESS> nodes(std::size(servers) + 1); // the last has no address at all
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i)
    {
        nodes[i].Address = servers[i];
        nodes[i].Next = &nodes[i + 1];
    }
    Only().FirstDnsServerAddress = nodes.data();
    std::vector<velmor::ip_address> list = {velmor::ip_address(velmor::string("10.0.0.1"))};
    EXPECT_TRUE(table.GetDnsServerList(INDEX, list));
    std::string sTexts;
    for (const velmor::ip_address& server : list)
        sTexts += velmor::string(server).narrow_c_str() + std::string(" ");
    EXPECT_EQ("10.0.0.1 192.0.2.53 fe80::53 2001:db8::53 ", sTexts);
    EXPECT_EQ(0U, list.at(2).sockaddr().Ipv6.sin6_scope_id);
    EXPECT_EQ(0U, list.at(1).sockaddr().Ipv4.sin_port);
    const std::string NAME = "[V] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDnsServerList : ";
    EXPECT_TRUE(trace.Has(NAME + "sDns = \"fe80::53\""));
    EXPECT_TRUE(trace.Has(NAME + "uiDnsServerCount = 4"));
}

TEST_F(AddressTable, HardwareAddresses)
{
    const std::pair<ULONG, const wchar_t*> rows[] = {
        {0, L""}, {6, L"01-02-03-04-05-06"}, {8, L"01-02-03-04-05-06-07-08"}, {0xFFFFFFFF, L"01-02-03-04-05-06-07-08"}};
    for (const auto& [ulLength, pszText] : rows)
    {
        IP_ADAPTER_ADDRESSES& record = Only();
        std::ranges::copy(std::to_array<BYTE>({1, 2, 3, 4, 5, 6, 7, 8}), record.PhysicalAddress);
        record.PhysicalAddressLength = ulLength;
        table.LoadTable();
        TOLVA::HARDWARE_ADDRESS address(record.PhysicalAddress, 3);
        EXPECT_TRUE(table.GetHardwareAddress(INDEX, address));
        EXPECT_EQ(pszText, Text(address)) << ulLength;
        EXPECT_EQ(ulLength != 0, trace.Complaints().empty());
    }
}

/// Older systems give shorter records. What would lie beyond their end must not be read.
TEST_F(AddressTable, RecordsOfOlderSystems)
{
    const std::pair<std::size_t, TOLVA::FAMILY_TYPE> rows[] = {
        {offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex), TOLVA::FAMILY_IPV4},
        {offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex) + 3, TOLVA::FAMILY_IPV4},
        {offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex) + sizeof(DWORD), TOLVA::FAMILY_BOTH},
        {sizeof(IP_ADAPTER_ADDRESSES_XP), TOLVA::FAMILY_BOTH},
        {offsetof(IP_ADAPTER_ADDRESSES, Dhcpv4Server) + sizeof(void*), TOLVA::FAMILY_BOTH}};
    for (const auto& [length, enExpected] : rows)
    {
        SCOPED_TRACE(length);
        Only().PhysicalAddressLength = 6;
        addresses.entries[0].ulLength = static_cast<ULONG>(length);
        for (const Operation& operation : OPERATIONS)
            EXPECT_TRUE(operation.ask(Adapter())) << operation.sName;
        table.LoadTable();
        TOLVA::FAMILY_TYPE enFamily = TOLVA::FAMILY_IPV6;
        EXPECT_TRUE(table.GetAddressFamilySupported(INDEX, enFamily));
        EXPECT_EQ(enExpected, enFamily);
        velmor::ip_address server(velmor::string("9.9.9.9"));
        EXPECT_TRUE(table.GetDhcpServer(INDEX, server));
        EXPECT_EQ(velmor::ip_address(), server);
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
    for (const Operation& operation : OPERATIONS)
    {
        SCOPED_TRACE(operation.sName);
        const std::string NAME = "] TOLVA::" + operation.sName + " : ";
        const std::string MEMBER = "] TOLVA::Wrap_IP_ADAPTER_ADDRESSES::" + operation.sMember + " : ";
        const std::string FAILED =
            "[E" + NAME + "... ending( Wrap_IP_ADAPTER_ADDRESSES::" + operation.sMember + "() failed )\n";
        Only();
        EXPECT_TRUE(operation.ask(Adapter()));
        EXPECT_EQ("[V" + NAME + "... ending", trace.Lines().back());
        EXPECT_EQ(operation.ulFamily, addresses.calls.at(0).ulFamily);

        Only(INDEX + 1);
        EXPECT_FALSE(operation.ask(Adapter()));
        EXPECT_TRUE(trace.Has("[V" + MEMBER + "... ending : bFound = false"));
        EXPECT_EQ(FAILED, trace.Complaints());
        addresses.codes = {0, 0, 5};
        addresses.calls.resize(2);
        EXPECT_FALSE(operation.ask(Adapter()));
        EXPECT_TRUE(trace.Complaints().ends_with("[E" + MEMBER +
                                                 "... ending( Failed to load IP_ADAPTER_ADDRESSES table )\n" + FAILED));

        EXPECT_FALSE(operation.ask(Adapter(L"")));
        trace.ExpectLines({"[V" + NAME + "starting ...", "[E" + NAME + "... ending( Bad NIC GUID )"});
        indexCodes.assign(indexNames.size() + 1, ERROR_INVALID_PARAMETER);
        EXPECT_FALSE(operation.ask(Adapter()));
        EXPECT_EQ("[E" + NAME + "... ending( TOLVA::GetAdapterIndex failed )", trace.Lines().back());
    }
}

} // namespace
