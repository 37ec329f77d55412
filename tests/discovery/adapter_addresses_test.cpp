#include <algorithm>
#include <array>
#include <cstddef>

#include <adapters/wrap_ip_adapter_addresses.h>
#include <support/fakes/platform_test.h>

using namespace testing_support;

namespace
{

using Table = TOLVA::Wrap_IP_ADAPTER_ADDRESSES;

constexpr DWORD INDEX = 11;

/// A socket address of any family and stated length, on memory of exactly the family's length.
class SocketAddress
{
public:
    SocketAddress(ADDRESS_FAMILY family, const char* pszAddress, INT length, DWORD dwScope = 0) : m_length(length)
    {
        SOCKADDR_INET whole = Ip(pszAddress).sockaddr();
        if (family == AF_INET6)
            whole.Ipv6.sin6_scope_id = dwScope;
        whole.Ipv4.sin_port = 0x3500;
        whole.si_family = family;
        const auto* pBytes = reinterpret_cast<const unsigned char*>(&whole);
        m_bytes.assign(pBytes, pBytes + (family == AF_INET6 ? sizeof(SOCKADDR_IN6) : sizeof(SOCKADDR_IN)));
    }
    operator SOCKET_ADDRESS() noexcept { return {reinterpret_cast<SOCKADDR*>(m_bytes.data()), m_length}; }

private:
    std::vector<unsigned char> m_bytes;
    INT m_length;
};

class AddressTable : public PlatformTest
{
protected:
    /// Makes an adapter the only one.
    IP_ADAPTER_ADDRESSES& Only(DWORD dwIndex = INDEX)
    {
        adapters.clear();
        return AddAdapter(dwIndex);
    }
    /// Asks a table that is loaded afresh, and tells all of its answers.
    template <class... Out>
    void Ask(const std::string& sTitle, bool (Table::*pQuestion)(unsigned long, Out&...), Out... out)
    {
        Tell(sTitle, [&] { return Show((Table(TOLVA::FAMILY_BOTH).*pQuestion)(INDEX, out...), out...); });
    }
};

TEST_F(AddressTable, HowTheTableIsLoaded)
{
    Only(); // does not fit into the first 440 bytes
    const std::pair<unsigned int, std::deque<DWORD>> rows[] = {
        {0, {}},    {2, {}},    {23, {}},      {99, {}},
        {0, {232}}, {0, {122}}, {0, {111, 8}}, {0, {111, 111}}}; // grown between the calls: there is no third
    for (const auto& [family, answers] : rows)
    {
        codes["GetAdaptersAddresses"] = answers;
        Table table(static_cast<TOLVA::FAMILY_TYPE>(family));
        Tell(Show("family", family), [&] { return table.LoadTable(); });
    }
}

TEST_F(AddressTable, OneCopyServesUntilItIsLoadedAgain)
{
    Only().IfType = IF_TYPE_FDDI;
    adapters[0].ulLength = 440; // a table that fits at once
    Table table{TOLVA::FAMILY_BOTH};
    velmor::string sType;
    const auto Type = [&] { return Show(table.GetAdapterType(INDEX, sType), sType); };
    const auto Load = [&] { return table.LoadTable(); };
    Tell("first question", Type);
    Tell("another adapter", [&] { return table.GetAdapterType(INDEX + 1, sType); });
    adapters[0].record.IfType = IF_TYPE_PPP;
    Tell("loaded", Load);
    Tell("question", Type);
    codes["GetAdaptersAddresses"] = {5};
    Tell("not loaded", Load);
    Tell("after a failure the next question loads", Type);
}

TEST_F(AddressTable, ADhcpQuestionNeedsATableOfItsFamily)
{
    velmor::ip_address server;
    unsigned long ulIAID = 0;
    velmor::string sDUID;
    Only();
    for (const auto enFamily : {TOLVA::FAMILY_BOTH, TOLVA::FAMILY_IPV4, TOLVA::FAMILY_IPV6})
    {
        Tell(Show("IPv4 of", enFamily), [&] { return Table(enFamily).GetDhcpServer(INDEX, server); });
        Tell(Show("IPv6 of", enFamily), [&] { return Table(enFamily).GetDhcpServer(INDEX, ulIAID, sDUID); });
    }
}

TEST_F(AddressTable, TypesAndStates)
{
    for (const IFTYPE type : {6UL, 9UL, 15UL, 23UL, 24UL, 28UL, 71UL, 0UL, 131UL, 0xFFFFFFFFUL})
    {
        Only(1).IfType = 7; // the entry before must not be taken for it
        AddAdapter(INDEX).IfType = type;
        Table table(TOLVA::FAMILY_BOTH);
        velmor::string sType;
        Tell(Show("type", type), [&] { return Show(table.GetAdapterType(INDEX, sType), sType); });
    }
    for (unsigned int status = 0; status <= 8; ++status)
    {
        Only().OperStatus = static_cast<IF_OPER_STATUS>(status);
        Ask(Show("status", status), &Table::GetAdapterOperStatus, static_cast<TOLVA::TOLVA_OPER_STATUS>(77));
    }
}

TEST_F(AddressTable, FamiliesOfAnAdapter)
{
    for (const auto& [dwIndex, dwIpv6Index] : {std::pair(INDEX, 11UL), {INDEX, 0UL}, {0UL, 11UL}, {0UL, 0UL}})
    {
        Only(dwIndex).Ipv6IfIndex = dwIpv6Index;
        Table table(TOLVA::FAMILY_BOTH);
        auto enFamily = static_cast<TOLVA::FAMILY_TYPE>(99);
        Tell(Show("indices", dwIndex, dwIpv6Index),
             [&, dwIndex = dwIndex] { return Show(table.GetAddressFamilySupported(dwIndex, enFamily), enFamily); });
    }
}

TEST_F(AddressTable, NamesAndServers)
{
    for (const wchar_t* pszName : {static_cast<const wchar_t*>(nullptr), L"", L"LAN"})
    {
        Only().FriendlyName = const_cast<wchar_t*>(pszName);
        Ask("a friendly name or none", &Table::GetAdapterFriendlyName, velmor::string(L"before"));
    }
    SocketAddress good(AF_INET, "10.0.0.1", sizeof(SOCKADDR_IN)), shortened(AF_INET, "10.0.0.1", 7);
    for (const SOCKET_ADDRESS& address :
         std::initializer_list<SOCKET_ADDRESS>{{nullptr, 0}, {nullptr, 16}, good, shortened})
    {
        Only().Dhcpv4Server = address;
        Ask<velmor::ip_address>("DHCP server", &Table::GetDhcpServer, Ip("9.9.9.9"));
    }
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
    std::vector<velmor::ip_address> list = {Ip("10.0.0.1")};
    Ask("DNS servers", &Table::GetDnsServerList, list);
    EXPECT_TRUE(Table(TOLVA::FAMILY_BOTH).GetDnsServerList(INDEX, list));
    EXPECT_EQ(0U, list.at(2).sockaddr().Ipv6.sin6_scope_id);
    EXPECT_EQ(0U, list.at(1).sockaddr().Ipv4.sin_port);
}

TEST_F(AddressTable, LengthsOfByteArrays)
{
    for (const ULONG ulLength : {0UL, 1UL, 6UL, 8UL, static_cast<ULONG>(MAX_DHCPV6_DUID_LENGTH), 0xFFFFFFFFUL})
    {
        IP_ADAPTER_ADDRESSES& record = Only();
        std::ranges::copy(std::to_array<BYTE>({0, 1, 0, 1, 26, 255}), record.Dhcpv6ClientDuid);
        record.Dhcpv6ClientDuidLength = ulLength;
        record.Dhcpv6Iaid = 0xFEDCBA98;
        record.Flags = 0xBC;
        Ask<unsigned long, velmor::string>(Show("DUID of", ulLength), &Table::GetDhcpServer, 0UL, L"before");
        std::ranges::copy(std::to_array<BYTE>({1, 2, 3, 4, 5, 6, 7, 8}), record.PhysicalAddress);
        record.PhysicalAddressLength = ulLength;
        Ask(Show("hardware address of", ulLength), &Table::GetHardwareAddress,
            TOLVA::HARDWARE_ADDRESS(record.PhysicalAddress, 3));
    }
}

/// Older systems give shorter records. What would lie beyond their end must not be read.
TEST_F(AddressTable, RecordsOfOlderSystems)
{
    for (const std::size_t length :
         {offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex), offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex) + 3,
          offsetof(IP_ADAPTER_ADDRESSES, Ipv6IfIndex) + sizeof(DWORD), sizeof(IP_ADAPTER_ADDRESSES_XP),
          offsetof(IP_ADAPTER_ADDRESSES, Dhcpv4Server) + sizeof(void*)})
    {
        Only().PhysicalAddressLength = 6;
        adapters[0].ulLength = static_cast<ULONG>(length);
        Ask("status", &Table::GetAdapterOperStatus, TOLVA::OPER_STATUS_TESTING);
        Ask("hardware address", &Table::GetHardwareAddress, TOLVA::HARDWARE_ADDRESS());
        Ask("DNS servers", &Table::GetDnsServerList, std::vector<velmor::ip_address>());
        Ask(Show("length", length), &Table::GetAddressFamilySupported, TOLVA::FAMILY_IPV6);
        Ask<velmor::ip_address>("DHCP server", &Table::GetDhcpServer, Ip("9.9.9.9"));
        Ask<unsigned long, velmor::string>("DUID", &Table::GetDhcpServer, 7UL, L"before");
    }
}

} // namespace
