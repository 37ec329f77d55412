#include <state/reading/adapter_table.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <windows.h>

#include <state/platform/socket_address.h>
#include <state/platform/table_buffer.h>
#include <state/platform/utf8.h>
#include <state/reading/mask_table.h>

namespace zelk
{
namespace
{

using Record = IP_ADAPTER_ADDRESSES;

constexpr ULONG FLAGS = GAA_FLAG_INCLUDE_PREFIX | GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST;
constexpr ULONG VISTA_FLAGS = FLAGS | GAA_FLAG_INCLUDE_GATEWAYS;
constexpr std::size_t COMMON_SIZE =
    std::size_t(256) * 1024; ///< a hundred adapters; to ask twice costs far more than the room

/// A member of a record, which on older systems ends before those that newer ones have added.
template <class Struct, class Member>
std::optional<Member> Get(const Struct& record, Member Struct::*member)
{
    const auto offset =
        reinterpret_cast<const std::byte*>(&(record.*member)) - reinterpret_cast<const std::byte*>(&record);
    // Pointers are members too. NOLINTNEXTLINE(bugprone-sizeof-expression)
    if (static_cast<std::size_t>(offset) + sizeof(Member) > record.Length)
        return std::nullopt;
    return record.*member;
}

template <class Pointer>
Pointer GetPointer(const Record& record, Pointer Record::*member)
{
    return Get(record, member).value_or(nullptr);
}

std::optional<std::string> TextOf(const wchar_t* text)
{
    return text != nullptr ? std::optional(ToUtf8(text)) : std::nullopt;
}

std::optional<AdapterType> TypeOf(IFTYPE type)
{
    constexpr struct
    {
        IFTYPE number;
        AdapterType type;
    } TYPES[] = {{IF_TYPE_ETHERNET_CSMACD, AdapterType::ETHERNET},
                 {IF_TYPE_ISO88025_TOKENRING, AdapterType::TOKEN_RING},
                 {IF_TYPE_FDDI, AdapterType::FDDI},
                 {IF_TYPE_PPP, AdapterType::PPP},
                 {IF_TYPE_SOFTWARE_LOOPBACK, AdapterType::LOOPBACK},
                 {IF_TYPE_SLIP, AdapterType::SLIP},
                 {IF_TYPE_IEEE80211, AdapterType::WIRELESS},
                 {IF_TYPE_TUNNEL, AdapterType::TUNNEL}};
    const auto* const known = std::ranges::find(TYPES, type, [](const auto& row) { return row.number; });
    return known != std::end(TYPES) ? known->type : AdapterType::OTHER;
}

AdapterStatus StatusOf(IF_OPER_STATUS status)
{
    switch (status)
    {
    case IfOperStatusUp: return AdapterStatus::UP;
    case IfOperStatusDown: return AdapterStatus::DOWN;
    case IfOperStatusTesting: return AdapterStatus::TESTING;
    case IfOperStatusDormant: return AdapterStatus::DORMANT;
    case IfOperStatusNotPresent: return AdapterStatus::NOT_PRESENT;
    case IfOperStatusLowerLayerDown: return AdapterStatus::LOWER_LAYER_DOWN;
    default: return AdapterStatus::UNKNOWN;
    }
}

AddressOrigin OriginOf(const IP_ADAPTER_UNICAST_ADDRESS& record)
{
    if (record.PrefixOrigin == IpPrefixOriginManual)
        return AddressOrigin::MANUAL;
    if (record.PrefixOrigin == IpPrefixOriginDhcp || record.SuffixOrigin == IpSuffixOriginDhcp)
        return AddressOrigin::DHCP;
    if (record.SuffixOrigin == IpSuffixOriginRandom)
        return AddressOrigin::RANDOM;
    if (record.PrefixOrigin == IpPrefixOriginRouterAdvertisement)
        return AddressOrigin::ROUTER;
    if (record.SuffixOrigin == IpSuffixOriginLinkLayerAddress)
        return AddressOrigin::LINK_LAYER;
    return record.PrefixOrigin == IpPrefixOriginWellKnown ? AddressOrigin::WELL_KNOWN : AddressOrigin::OTHER;
}

std::optional<DadState> DadStateOf(NL_DAD_STATE state)
{
    switch (state)
    {
    case IpDadStateInvalid: return DadState::INVALID;
    case IpDadStateTentative: return DadState::TENTATIVE;
    case IpDadStateDuplicate: return DadState::DUPLICATE;
    case IpDadStateDeprecated: return DadState::DEPRECATED;
    case IpDadStatePreferred: return DadState::PREFERRED;
    default: return std::nullopt;
    }
}

/// The adapter's prefix that fits the address best, for records that end before the address's own prefix length. Every
/// address also stands in the list as a prefix of its own, which counts only where nothing else fits.
std::optional<std::uint8_t> LongestPrefix(const Record& record, const IpAddress& address)
{
    const ULONG whole = BitsOf(address.GetFamily());
    std::optional<std::uint8_t> longest;
    for (const auto* p = GetPointer(record, &Record::FirstPrefix); p != nullptr; p = p->Next)
    {
        const auto start = FromSocketAddress(p->Address);
        if (!start || p->PrefixLength > whole)
            continue;
        const auto length = static_cast<std::uint8_t>(p->PrefixLength);
        const bool better = !longest || *longest == whole || (length > *longest && length != whole);
        if (better && IpPrefix{*start, length}.Contains(address))
            longest = length;
    }
    return longest;
}

/// Tables before Vista say "preferred" of every address: they do not know better.
Address AddressOf(const Record& adapter, const IP_ADAPTER_UNICAST_ADDRESS& record, const IpAddress& address, bool vista)
{
    Address result;
    result.address = address;
    result.prefixLength = Get(record, &IP_ADAPTER_UNICAST_ADDRESS::OnLinkPrefixLength);
    if (!result.prefixLength || !vista)
        result.prefixLength = LongestPrefix(adapter, address);
    result.origin = OriginOf(record);
    if (vista)
        result.dadState = DadStateOf(record.DadState);
    result.validLifetime = Lifetime{record.ValidLifetime};
    result.preferredLifetime = Lifetime{record.PreferredLifetime};
    return result;
}

/// Appends to the list of its family what a linked list of the record holds.
template <class Entry, class Append>
void ForEachAddress(const Entry* first, Append&& append)
{
    for (const Entry* p = first; p != nullptr; p = p->Next)
        if (const auto address = FromSocketAddress(p->Address))
            append(*address, *p);
}

void AddAddresses(const Record& record, bool vista, Adapter& adapter)
{
    for (const Family family : FAMILIES)
    {
        adapter.Of(family).addresses.emplace();
        adapter.Of(family).dnsServers.emplace();
    }
    ForEachAddress(record.FirstUnicastAddress, [&](const IpAddress& address, const auto& entry) {
        adapter.Of(address.GetFamily()).addresses->push_back(AddressOf(record, entry, address, vista));
    });
    ForEachAddress(record.FirstDnsServerAddress, [&](const IpAddress& address, const auto&) {
        adapter.Of(address.GetFamily()).dnsServers->push_back(address);
    });
}

/// The routes tell their metrics; this list is for systems whose route table cannot be read.
void AddGateways(const Record& record, bool vista, Adapter& adapter)
{
    if (!vista || !Get(record, &Record::FirstGatewayAddress))
        return;
    for (const Family family : FAMILIES)
        adapter.Of(family).gateways.emplace();
    ForEachAddress(record.FirstGatewayAddress, [&](const IpAddress& address, const auto&) {
        adapter.Of(address.GetFamily()).gateways->push_back({address, std::nullopt});
    });
}

/// The platform's 0 is no metric.
std::optional<std::uint32_t> NotZero(std::optional<ULONG> number)
{
    return number.value_or(0) != 0 ? std::optional<std::uint32_t>(*number) : std::nullopt;
}

/// From Vista on flags tell whether a family is bound to the adapter; before, it has an index then.
void AddFamilies(const Record& record, bool vista, Adapter& adapter)
{
    const IF_INDEX ipv6Index = Get(record, &Record::Ipv6IfIndex).value_or(0);
    adapter.index = NotZero(record.IfIndex != 0 ? record.IfIndex : ipv6Index);
    adapter.ipv6Index = NotZero(ipv6Index);
    adapter.ipv4.enabled = vista ? record.Ipv4Enabled != 0 : record.IfIndex != 0;
    adapter.ipv6.enabled = vista ? record.Ipv6Enabled != 0 : ipv6Index != 0;
    adapter.ipv4.metric = NotZero(Get(record, &Record::Ipv4Metric));
    adapter.ipv6.metric = NotZero(Get(record, &Record::Ipv6Metric));
    for (const Family family : FAMILIES)
    {
        adapter.Of(family).mtu = adapter.mtu;
        adapter.Of(family).dnsSuffix = TextOf(record.DnsSuffix);
    }
}

void AddDhcp(const Record& record, Adapter& adapter)
{
    adapter.ipv4.dhcp = record.Dhcpv4Enabled != 0;
    if (const auto server = Get(record, &Record::Dhcpv4Server))
        if (const auto address = FromSocketAddress(*server); address && IsDhcpServer(*address))
            adapter.ipv4.lease.emplace().server = *address;
    const std::size_t length = std::min<std::size_t>(Get(record, &Record::Dhcpv6ClientDuidLength).value_or(0),
                                                     std::size(record.Dhcpv6ClientDuid));
    if (length == 0)
        return;
    adapter.ipv6.dhcpDuid = HexPairs({record.Dhcpv6ClientDuid, length}, "-");
    adapter.ipv6.dhcpIaid = Get(record, &Record::Dhcpv6Iaid);
}

std::optional<HardwareAddress> HardwareAddressOf(const Record& record)
{
    const std::size_t length = std::min<std::size_t>(record.PhysicalAddressLength, std::size(record.PhysicalAddress));
    if (length == 0)
        return std::nullopt;
    return HardwareAddress(std::span(record.PhysicalAddress, length));
}

/// The link table knows the speeds of systems whose records end before theirs.
void AddLink(const Record& record, const LinkTable& links, Adapter& adapter)
{
    const auto found = links.find(adapter.index.value_or(0));
    if (found == links.end())
        return;
    const Link& link = found->second;
    adapter.kind = link.kind;
    adapter.mediaConnected = link.mediaConnected;
    adapter.transmitSpeed = link.transmitSpeed;
    adapter.receiveSpeed = link.receiveSpeed;
    if (record.OperStatus == IfOperStatusDown && link.mediaConnected == false)
        adapter.status = AdapterStatus::UNPLUGGED;
}

Adapter AdapterOf(const Record& record, bool vista)
{
    Adapter adapter;
    adapter.guid = record.AdapterName != nullptr ? Guid::Parse(record.AdapterName) : std::nullopt;
    adapter.friendlyName = TextOf(record.FriendlyName);
    adapter.description = TextOf(record.Description);
    adapter.hardwareAddress = HardwareAddressOf(record);
    adapter.type = TypeOf(record.IfType);
    adapter.status = StatusOf(record.OperStatus);
    adapter.hidden = adapter.type == AdapterType::LOOPBACK || adapter.type == AdapterType::TUNNEL;
    adapter.mtu = NotZero(record.Mtu);
    AddFamilies(record, vista, adapter);
    AddAddresses(record, vista, adapter);
    AddGateways(record, vista, adapter);
    AddDhcp(record, adapter);
    return adapter;
}

/// Systems from Vista's first service pack on also list what is bound to no protocol.
DWORD FillTable(TableBuffer& buffer, bool vista)
{
    const auto Ask = [&](ULONG flags) {
        return buffer.Fill(ERROR_BUFFER_OVERFLOW, [flags](void* table, ULONG& size) {
            return ::GetAdaptersAddresses(AF_UNSPEC, flags, nullptr, static_cast<Record*>(table), &size);
        });
    };
    if (!vista)
        return Ask(FLAGS);
    const DWORD code = Ask(VISTA_FLAGS | GAA_FLAG_INCLUDE_ALL_INTERFACES);
    return code == ERROR_INVALID_PARAMETER || code == ERROR_INVALID_FLAGS ? Ask(VISTA_FLAGS) : code;
}

/// Where addresses have no prefix lengths of their own.
void TakePrefixLengths(Adapter& adapter, const MaskTable& masks)
{
    for (Address& address : *adapter.ipv4.addresses)
        if (const auto mask = masks.find(std::pair(adapter.index.value_or(0), address.address)); mask != masks.end())
            address.prefixLength = mask->second;
}

} // namespace

bool ReadAdapterTable(Reading& reading, const LinkTable& links)
{
    const bool vista = reading.IsVistaOrLater();
    TableBuffer buffer(COMMON_SIZE);
    const DWORD code = FillTable(buffer, vista);
    if (code == ERROR_NO_DATA || code == ERROR_ADDRESS_NOT_ASSOCIATED)
        return true; // no adapter
    if (code != NO_ERROR)
    {
        reading.Report(code, "GetAdaptersAddresses", "The addresses and the states of the adapters are not known.");
        return false;
    }
    const MaskTable masks = vista ? MaskTable() : ReadMaskTable(reading);
    for (const Record* p = buffer.As<Record>(); p != nullptr; p = p->Next)
    {
        Adapter adapter = AdapterOf(*p, vista);
        AddLink(*p, links, adapter);
        TakePrefixLengths(adapter, masks);
        const auto link = links.find(adapter.index.value_or(0));
        if (link == links.end() || !link->second.filter)
            reading.Add(std::move(adapter));
    }
    return true;
}

} // namespace zelk
