#include <adapters/wrap_ip_adapter_addresses.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include <support/operation/family.h>
#include <support/values/hex_text.h>
#include <support/values/socket_address.h>

namespace
{

// Less than a single record takes on the newest systems, 448 bytes: there the first call only tells the size.
constexpr ULONG FIRST_SIZE = 440;
constexpr ULONG TABLE_FLAGS = GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST;

/// A field of a table entry, or zero where the system's records end before it: each release has added fields at their
/// end (DHCP's came with Vista) and says the length in the record.
template <class T>
T Field(const IP_ADAPTER_ADDRESSES& entry, T IP_ADAPTER_ADDRESSES::*pField) noexcept
{
    const auto* pBegin = reinterpret_cast<const std::byte*>(&entry);
    const auto* pEnd = reinterpret_cast<const std::byte*>(&(entry.*pField) + 1);
    return pEnd - pBegin <= static_cast<std::ptrdiff_t>(entry.Length) ? entry.*pField : T();
}

struct TypeText
{
    IFTYPE type;
    const wchar_t* pszText;
};
// The numbers are IANA's. Wireless adapters (IF_TYPE_IEEE80211) count among the others: systems before Vista report
// them as Ethernet.
constexpr TypeText TYPE_TEXTS[] = {{IF_TYPE_ETHERNET_CSMACD, L"ETHERNET"},
                                   {IF_TYPE_ISO88025_TOKENRING, L"TOKENRING"},
                                   {IF_TYPE_FDDI, L"FDDI"},
                                   {IF_TYPE_PPP, L"PPP"},
                                   {IF_TYPE_SOFTWARE_LOOPBACK, L"LOOPBACK"},
                                   {IF_TYPE_SLIP, L"SLIP"}};

const wchar_t* TypeOf(IFTYPE type) noexcept
{
    for (const TypeText& row : TYPE_TEXTS)
        if (row.type == type)
            return row.pszText;
    return L"OTHER";
}

constexpr const char* STATUS_NAMES[] = {"TOLVA::OPER_STATUS_UP",
                                        "TOLVA::OPER_STATUS_DOWN",
                                        "TOLVA::OPER_STATUS_TESTING",
                                        "TOLVA::OPER_STATUS_UNKNOWN",
                                        "TOLVA::OPER_STATUS_DORMANT",
                                        "TOLVA::OPER_STATUS_NOT_PRESENT",
                                        "TOLVA::OPER_STATUS_LOWER_LAYER_DOWN"};

void TraceSocketAddress(const CallFrame& frame, const char* pszVariable, const SOCKET_ADDRESS& sa)
{
    constexpr INT LONGEST = sizeof(SOCKADDR_INET);
    const auto length = static_cast<unsigned int>(std::clamp(sa.iSockaddrLength, 0, LONGEST));
    if (sa.lpSockaddr != nullptr)
        frame.Verbose(pszVariable, CallFrame::Bytes{sa.lpSockaddr, length});
}

} // namespace

TOLVA::Wrap_IP_ADAPTER_ADDRESSES::Wrap_IP_ADAPTER_ADDRESSES(FAMILY_TYPE enFamily)
    : m_enFamily(enFamily), m_buffer(FIRST_SIZE)
{
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable()
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::LoadTable");
    m_pAddresses = nullptr;
    const FAMILY_TYPE enFamily = FamilyText(m_enFamily) != nullptr ? m_enFamily : FAMILY_BOTH;
    frame.Verbose(FamilyText(enFamily));

    m_buffer.assign(FIRST_SIZE, 0);
    DWORD ulRc = NO_ERROR;
    if (!velmor::CallThenGrowOnce(m_buffer, ulRc, [&](void* pTable, ULONG& ulSize) {
            m_pAddresses = static_cast<IP_ADAPTER_ADDRESSES*>(pTable);
            return ::GetAdaptersAddresses(enFamily, TABLE_FLAGS, nullptr, m_pAddresses, &ulSize);
        }))
    {
        m_pAddresses = nullptr;
        return frame.Fail("GetAdaptersAddresses failed", "ulRc", ulRc);
    }
    return frame.Succeed();
}

const IP_ADAPTER_ADDRESSES* TOLVA::Wrap_IP_ADAPTER_ADDRESSES::Find(unsigned long ulIndex) const noexcept
{
    const IP_ADAPTER_ADDRESSES* pEntry = m_pAddresses;
    while (pEntry != nullptr && pEntry->IfIndex != ulIndex)
        pEntry = pEntry->Next;
    return pEntry;
}

/// What every question has in common: load, find, extract, report whether the adapter was found. An extraction that
/// answers false has traced why, and ends the question.
template <class Extract>
bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::Query(const CallFrame& frame, unsigned long ulIndex, Extract&& extract)
{
    if (m_pAddresses == nullptr && !LoadTable())
        return frame.Fail("Failed to load IP_ADAPTER_ADDRESSES table");
    const IP_ADAPTER_ADDRESSES* pEntry = Find(ulIndex);
    const bool bFound = pEntry != nullptr;
    if (bFound && !extract(*pEntry))
        return false;
    frame.Verbose("... ending", "bFound", bFound);
    return bFound;
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName(unsigned long ulIndex, velmor::string& sNicFriendlyName)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterFriendlyName");
    frame.Verbose("ulIndex", ulIndex);
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        if (entry.FriendlyName != nullptr && *entry.FriendlyName != L'\0')
        {
            sNicFriendlyName = entry.FriendlyName;
            frame.Verbose("sNicFriendlyName", sNicFriendlyName);
        }
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus(unsigned long ulIndex, TOLVA_OPER_STATUS& enOperStatus)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterOperStatus");
    frame.Verbose("ulIndex", ulIndex);
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        const auto status = static_cast<unsigned int>(entry.OperStatus);
        if (status < OPER_STATUS_UP || status > OPER_STATUS_LOWER_LAYER_DOWN)
            return frame.Fail("Unknown operational status", "pCurrAddresses->OperStatus", status);
        enOperStatus = static_cast<TOLVA_OPER_STATUS>(status);
        frame.Information(STATUS_NAMES[status - OPER_STATUS_UP]);
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType(unsigned long ulIndex, velmor::string& sNicType)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAdapterType");
    frame.Verbose("ulIndex", ulIndex);
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        sNicType = TypeOf(entry.IfType);
        frame.Verbose("sNicType", sNicType);
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAddressFamilySupported(unsigned long ulIndex, FAMILY_TYPE& enFamilyType)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetAddressFamilySupported");
    frame.Verbose("ulIndex", ulIndex);
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        const auto Supports = [&](ULONG ulFamilyIndex, const char* pszText) {
            if (ulFamilyIndex != 0)
                frame.Verbose(pszText);
            return ulFamilyIndex != 0;
        };
        // Entries are found by their IPv4 index, so this family counts as supported unless 0 was asked
        // for.
        const bool bIPv4 = Supports(entry.IfIndex, "IPv4 supported");
        const bool bIPv6 = Supports(Field(entry, &IP_ADAPTER_ADDRESSES::Ipv6IfIndex), "IPv6 supported");
        if (!bIPv4 && !bIPv6)
            return frame.Fail("Neither IPv4 nor IPv6 supported");
        enFamilyType = bIPv4 && bIPv6 ? FAMILY_BOTH : bIPv4 ? FAMILY_IPV4 : FAMILY_IPV6;
        frame.Ending(TRACE_VERBOSE, bIPv4 && bIPv6 ? "Both IPv4 and IPv6 supported"
                                    : bIPv4        ? "IPv4 supported"
                                                   : "IPv6 supported");
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer(unsigned long ulIndex, velmor::ip_address& DhcpServer)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer");
    if (m_enFamily != FAMILY_BOTH && m_enFamily != FAMILY_IPV4)
        return frame.Fail("Wrong Wrap_IP_ADAPTER_ADDRESSES used");
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        const SOCKET_ADDRESS server = Field(entry, &IP_ADAPTER_ADDRESSES::Dhcpv4Server);
        TraceSocketAddress(frame, "pCurrAddresses->Dhcpv4Server.lpSockaddr", server);
        DhcpServer = Convert_SOCKET_ADDRESS(server);
        frame.Verbose("sDhcpServerAddr", DhcpServer);
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer(unsigned long ulIndex, unsigned long& ulIAID,
                                                     velmor::string& sDUID)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDhcpServer");
    if (m_enFamily != FAMILY_BOTH && m_enFamily != FAMILY_IPV6)
        return frame.Fail("Wrong Wrap_IP_ADAPTER_ADDRESSES used");
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        frame.Verbose("pCurrAddresses->Flags", CallFrame::Hex{Field(entry, &IP_ADAPTER_ADDRESSES::Flags)});
        TraceSocketAddress(frame, "pCurrAddresses->Dhcpv6Server.lpSockaddr",
                           Field(entry, &IP_ADAPTER_ADDRESSES::Dhcpv6Server));
        // The text first: without memory for it neither is changed.
        const std::size_t length = Field(entry, &IP_ADAPTER_ADDRESSES::Dhcpv6ClientDuidLength);
        velmor::string sText =
            velmor::HexPairs(entry.Dhcpv6ClientDuid, std::min(length, std::size(entry.Dhcpv6ClientDuid)));
        ulIAID = Field(entry, &IP_ADAPTER_ADDRESSES::Dhcpv6Iaid);
        frame.Verbose("dwIAID", ulIAID);
        sDUID = std::move(sText);
        frame.Verbose("sDUID", sDUID);
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDnsServerList(unsigned long ulIndex,
                                                        std::vector<velmor::ip_address>& DnsServerList)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetDnsServerList");
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        for (const auto* pDns = entry.FirstDnsServerAddress; pDns != nullptr; pDns = pDns->Next)
        {
            // By way of the text, which carries no port and no scope.
            const velmor::string sDns = TextOf(velmor::ip_address(velmor::CopySocketAddress(pDns->Address)));
            frame.Verbose("sDns", sDns);
            const velmor::ip_address address(sDns);
            if (address.is_valid())
                DnsServerList.push_back(address);
        }
        frame.Verbose("uiDnsServerCount", DnsServerList.size());
        return true;
    });
}

bool TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetHardwareAddress(unsigned long ulIndex, HARDWARE_ADDRESS& HwAddr)
{
    const CallFrame frame("TOLVA::Wrap_IP_ADAPTER_ADDRESSES::GetHardwareAddress");
    return Query(frame, ulIndex, [&](const IP_ADAPTER_ADDRESSES& entry) {
        constexpr ULONG LONGEST = sizeof(entry.PhysicalAddress);
        const ULONG length = std::min(entry.PhysicalAddressLength, LONGEST);
        HwAddr = HARDWARE_ADDRESS(entry.PhysicalAddress, length);
        frame.Verbose("sHwAddr", HwAddr);
        return true;
    });
}
