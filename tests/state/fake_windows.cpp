#include <state/fake_windows.h>

#include <cstdlib>
#include <cstring>
#include <tuple>

#include <gtest/gtest.h>

#include <support/registry_json.h>

using testing_support::DwordData;
using testing_support::SetValue;
using testing_support::StringData;
using testing_support::Wide;

namespace
{

FakeWindows* theWindows = nullptr;
constexpr ULONG NO_MASK = 0xFF00FF;
constexpr BYTE FOREIGN = 0xCD; ///< what lies where a shorter record has ended
const auto DEVICES = reinterpret_cast<HDEVINFO>(0x1234);

DWORD CopyText(const std::wstring& text, wchar_t* buffer, DWORD size, DWORD* needed)
{
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    if (needed != nullptr)
        *needed = bytes;
    if (size < bytes)
        return ERROR_INSUFFICIENT_BUFFER;
    std::memcpy(buffer, text.c_str(), bytes);
    return NO_ERROR;
}

MIB_IF_ROW2 LinkRow(const FakeAdapter& adapter)
{
    MIB_IF_ROW2 row = {};
    row.InterfaceIndex = adapter.index;
    row.InterfaceAndOperStatusFlags.FilterInterface = adapter.filter;
    row.InterfaceAndOperStatusFlags.HardwareInterface = adapter.hardware;
    row.MediaConnectState = adapter.media;
    row.TransmitLinkSpeed = row.ReceiveLinkSpeed = adapter.status == IfOperStatusUp ? 1000000000 : ~0ULL;
    return row;
}

DWORD WINAPI GetLinks(MIB_IF_TABLE2** table)
{
    if (const DWORD code = theWindows->Count("GetIfTable2"))
        return code;
    std::vector<MIB_IF_ROW2> rows;
    for (const FakeAdapter& adapter : theWindows->adapters)
        rows.push_back(LinkRow(adapter));
    *table = theWindows->Allocate<MIB_IF_TABLE2>(rows);
    return NO_ERROR;
}

DWORD WINAPI GetInterfaces(ADDRESS_FAMILY family, MIB_IPINTERFACE_TABLE** table)
{
    if (const DWORD code = theWindows->Count("GetIpInterfaceTable"))
        return code;
    std::vector<MIB_IPINTERFACE_ROW> rows;
    for (const FakeAdapter& adapter : theWindows->adapters)
        if (family == AF_INET ? adapter.ipv4 : adapter.ipv6)
        {
            MIB_IPINTERFACE_ROW& row = rows.emplace_back();
            row.InterfaceIndex = adapter.index;
            row.Metric = family == AF_INET ? 25 : 35;
            row.UseAutomaticMetric = family == AF_INET;
            row.NlMtu = 1400;
        }
    *table = theWindows->Allocate<MIB_IPINTERFACE_TABLE>(rows);
    return NO_ERROR;
}

DWORD WINAPI GetRoutes(ADDRESS_FAMILY family, MIB_IPFORWARD_TABLE2** table)
{
    if (const DWORD code = theWindows->Count("GetIpForwardTable2"))
        return code;
    std::vector<MIB_IPFORWARD_ROW2> rows;
    for (const FakeRoute& route : theWindows->routes)
    {
        const auto destination = zelk::IpPrefix::Parse(route.destination).value();
        if (destination.address.IsIpv4() != (family == AF_INET))
            continue;
        MIB_IPFORWARD_ROW2& row = rows.emplace_back();
        row.InterfaceIndex = route.index;
        row.DestinationPrefix = {SocketInet(destination.address.ToText()), destination.length};
        row.DestinationPrefix.Prefix.si_family ^= route.otherFamily;
        row.DestinationPrefix.PrefixLength ^= route.excess;
        row.NextHop = SocketInet(route.nextHop);
        row.Metric = route.metric;
        row.Protocol = route.protocol;
        row.Origin = route.origin;
    }
    *table = theWindows->Allocate<MIB_IPFORWARD_TABLE2>(rows);
    return NO_ERROR;
}

void WINAPI FreeTable(void* table)
{
    --theWindows->liveTables;
    std::free(table);
}

LONG WINAPI TellVersion(OSVERSIONINFOW* version)
{
    version->dwMajorVersion = theWindows->majorVersion;
    version->dwMinorVersion = theWindows->majorVersion == 5 ? 2 : 0;
    version->dwBuildNumber = 19045;
    return 0;
}

ULONG MaskOf(const zelk::IpPrefix& prefix)
{
    return htonl(static_cast<ULONG>(~0ULL << (32 - prefix.length)));
}

DWORD OldRoutes(MIB_IPFORWARDTABLE* table, ULONG* size)
{
    if (const DWORD code = theWindows->Count("GetIpForwardTable"))
        return code;
    const auto count = static_cast<DWORD>(theWindows->routes.size());
    const auto needed = static_cast<ULONG>(offsetof(MIB_IPFORWARDTABLE, table) + count * sizeof(MIB_IPFORWARDROW));
    if (*size < needed || theWindows->growths-- > 0)
    {
        *size = needed + *size;
        return ERROR_INSUFFICIENT_BUFFER;
    }
    table->dwNumEntries = 0;
    for (const FakeRoute& route : theWindows->routes)
    {
        const auto destination = zelk::IpPrefix::Parse(route.destination).value();
        if (!destination.address.IsIpv4())
            continue; // another table has them
        MIB_IPFORWARDROW& row = table->table[table->dwNumEntries++];
        row = {};
        row.dwForwardDest = SocketInet(destination.address.ToText()).Ipv4.sin_addr.s_addr;
        row.dwForwardMask = route.excess != 0 ? NO_MASK : MaskOf(destination);
        row.dwForwardNextHop = SocketInet(route.nextHop).Ipv4.sin_addr.s_addr;
        row.dwForwardIfIndex = route.index;
        row.dwForwardMetric1 = route.metric;
        row.dwForwardProto = route.protocol;
    }
    return NO_ERROR;
}

} // namespace

SOCKADDR_INET SocketInet(const std::string& text)
{
    SOCKADDR_INET socket = {};
    const auto address = zelk::IpAddress::Parse(text != "none" ? text : "::").value();
    socket.si_family = text == "none" ? AF_UNSPEC : address.IsIpv4() ? AF_INET : AF_INET6;
    std::memcpy(address.IsIpv4() ? static_cast<void*>(&socket.Ipv4.sin_addr) : &socket.Ipv6.sin6_addr,
                address.Bytes().data(), address.Bytes().size());
    return socket;
}

FakeAdapter MakeAdapter(ULONG index, const std::string& name)
{
    FakeAdapter adapter;
    adapter.index = index;
    char guid[40];
    std::snprintf(guid, sizeof(guid), "{%08lX-1111-2222-3333-444455556666}", index);
    adapter.guid = guid;
    adapter.name = name;
    adapter.subkey = std::to_string(10000 + index).substr(1);
    return adapter;
}

std::wstring Ipv4Key(const FakeAdapter& adapter)
{
    return SERVICES + L"Tcpip\\Parameters\\Interfaces\\" + Wide(adapter.guid);
}

std::wstring Ipv6Key(const FakeAdapter& adapter)
{
    return SERVICES + L"Tcpip6\\Parameters\\Interfaces\\" + Wide(adapter.guid);
}

FakeWindows::FakeWindows()
    : m_control(std::make_unique<testing_support::RegistryKeyScope>(CONTROL + L"Class" + NETWORK + L"Properties")),
      m_services(std::make_unique<testing_support::RegistryKeyScope>(SERVICES + L"Tcpip\\Parameters\\Interfaces"))
{
    theWindows = this;
    PatchTables();
    PatchDevices();
    PatchRegistry();
}

FakeWindows::FakeWindows(const nlohmann::json& machine) : FakeWindows()
{
    adapters = machine.at("adapters");
    devices = machine.at("devices");
    routes = machine.at("routes");
    for (const char* const list : {"adapters", "absent"})
        for (const FakeAdapter adapter : machine.at(list))
            if (!adapter.subkey.empty())
                Install(adapter);
}

FakeWindows::~FakeWindows()
{
    EXPECT_EQ(0, liveTables) << "tables that were not freed";
    EXPECT_TRUE(m_keys.empty()) << "keys that were not closed";
    for (const std::wstring& key :
         {CONTROL + L"Class" + NETWORK, CONTROL + L"Network" + NETWORK, SERVICES + L"Tcpip\\Parameters\\Interfaces\\",
          SERVICES + L"Tcpip6\\", SERVICES + L"Tcpip\\Parameters\\PersistentRoutes\\",
          SERVICES + L"NetBT\\Parameters\\"})
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.substr(0, key.size() - 1).c_str());
    theWindows = nullptr;
}

void FakeWindows::Install(const FakeAdapter& adapter)
{
    const std::wstring subkey = Wide(adapter.subkey);
    const std::wstring classKey = CONTROL + L"Class" + NETWORK + subkey;
    SetValue(classKey, L"NetCfgInstanceId", StringData(Wide(adapter.guid)));
    SetValue(classKey, L"DriverDesc", StringData(L"Driver of " + Wide(adapter.name)));
    SetValue(classKey, L"DriverVersion", StringData(L"12.19.1.37"));
    SetValue(classKey, L"DriverDate", StringData(L"4-21-2022"));
    SetValue(classKey, L"Characteristics", DwordData(adapter.hardware ? 0x84 : 0x29));
    const std::wstring connection = CONTROL + L"Network" + NETWORK + Wide(adapter.guid) + L"\\Connection";
    SetValue(connection, L"Name", StringData(Wide(adapter.name)));
    SetValue(connection, L"PnpInstanceID", StringData(L"PCI\\" + subkey));
    SetValue(Ipv4Key(adapter), L"EnableDHCP", DwordData(adapter.dhcp ? 1 : 0));
    SetValue(Ipv6Key(adapter), L"Dhcpv6State", DwordData(0));
    SetValue(SERVICES + L"NetBT\\Parameters\\Interfaces\\Tcpip_" + Wide(adapter.guid), L"NetbiosOptions", DwordData(0));
}

int FakeWindows::AllCalls() const
{
    int all = 0;
    for (const auto& [name, count] : calls)
        all += count;
    return all;
}

DWORD FakeWindows::Count(const std::string& function)
{
    ++calls[function];
    if (failAt > 0 && --failAt == 0)
        return ERROR_ACCESS_DENIED;
    const auto failure = failures.find(function);
    return failure != failures.end() ? failure->second : NO_ERROR;
}

FARPROC FakeWindows::FunctionOf(const std::string& name) const
{
    const std::map<std::string, void*> functions = {{"GetIfTable2", reinterpret_cast<void*>(GetLinks)},
                                                    {"GetIpInterfaceTable", reinterpret_cast<void*>(GetInterfaces)},
                                                    {"GetIpForwardTable2", reinterpret_cast<void*>(GetRoutes)},
                                                    {"FreeMibTable", reinterpret_cast<void*>(FreeTable)},
                                                    {"RtlGetVersion", reinterpret_cast<void*>(TellVersion)}};
    const auto found = functions.find(name);
    const bool there = found != functions.end() && (majorVersion >= 6 || name == "RtlGetVersion");
    return there ? reinterpret_cast<FARPROC>(found->second) : nullptr;
}

template <class Table, class Row>
Table* FakeWindows::Allocate(const std::vector<Row>& rows)
{
    ++liveTables;
    auto* const table = static_cast<Table*>(std::malloc(sizeof(Table) + rows.size() * sizeof(Row)));
    table->NumEntries = static_cast<ULONG>(rows.size());
    std::copy(rows.begin(), rows.end(), table->Table);
    return table;
}

SOCKET_ADDRESS FakeWindows::SocketAddress(const std::string& text)
{
    const auto socket = std::make_shared<SOCKADDR_INET>(SocketInet(text));
    m_memory.push_back(socket);
    const auto whole = static_cast<INT>(socket->si_family == AF_INET ? sizeof(socket->Ipv4) : sizeof(socket->Ipv6));
    const auto cut = cutSockets.find(text);
    return {reinterpret_cast<SOCKADDR*>(socket.get()), cut != cutSockets.end() ? cut->second : whole};
}

template <class Record>
void FakeWindows::Append(Record*& first, Record record)
{
    const auto owner = std::make_shared<Record>(record);
    m_memory.push_back(owner);
    Record** place = &first;
    while (*place != nullptr)
        place = &(*place)->Next;
    *place = owner.get();
}

void FakeWindows::AddAddress(const FakeAddress& address, const FakeAdapter& adapter, IP_ADAPTER_ADDRESSES& record)
{
    const auto prefix = zelk::IpPrefix::Parse(address.prefix).value();
    IP_ADAPTER_UNICAST_ADDRESS unicast = {};
    unicast.Address = SocketAddress(prefix.address.ToText());
    unicast.PrefixOrigin = address.prefixOrigin;
    unicast.SuffixOrigin = address.suffixOrigin;
    unicast.DadState = address.dadState;
    unicast.ValidLifetime = unicast.PreferredLifetime = address.lifetime;
    unicast.OnLinkPrefixLength = adapter.old ? FOREIGN : prefix.length;
    unicast.Length = adapter.old ? offsetof(IP_ADAPTER_UNICAST_ADDRESS, OnLinkPrefixLength) : sizeof(unicast);
    Append(record.FirstUnicastAddress, unicast);
    for (const std::uint8_t length : {prefix.length, zelk::BitsOf(prefix.address.GetFamily())})
    {
        IP_ADAPTER_PREFIX entry = {};
        entry.Address = SocketAddress(zelk::IpPrefix{prefix.address, length}.Network().address.ToText());
        entry.PrefixLength = length;
        if (adapter.prefixes)
            Append(record.FirstPrefix, entry);
    }
}

/// The part of the record behind its length is filled with what no reader may look at.
void FakeWindows::Fill(const FakeAdapter& adapter, IP_ADAPTER_ADDRESSES& record)
{
    record = {};
    record.IfIndex = adapter.ipv4 || majorVersion >= 6 ? adapter.index : 0;
    record.Ipv6IfIndex = adapter.ipv6 ? adapter.index : 0;
    record.AdapterName = adapter.guid.empty() ? nullptr : const_cast<char*>(adapter.guid.c_str());
    const auto name = std::make_shared<std::wstring>(Wide(adapter.name));
    m_memory.push_back(name);
    record.FriendlyName = record.Description = name->empty() ? nullptr : name->data();
    record.DnsSuffix = const_cast<wchar_t*>(L"example.org");
    record.Dhcpv6ClientDuidLength = adapter.duidLength;
    record.PhysicalAddressLength = 6;
    record.PhysicalAddress[0] = 2;
    record.PhysicalAddress[5] = static_cast<BYTE>(adapter.index);
    record.Ipv4Enabled = adapter.ipv4;
    record.Ipv6Enabled = adapter.ipv6;
    record.Dhcpv4Enabled = adapter.dhcp;
    record.Mtu = 1500;
    record.IfType = adapter.type;
    record.OperStatus = adapter.status;
    for (const FakeAddress& address : adapter.addresses)
        AddAddress(address, adapter, record);
    for (const std::string& server : adapter.dnsServers)
    {
        IP_ADAPTER_DNS_SERVER_ADDRESS entry = {};
        entry.Address = SocketAddress(server);
        Append(record.FirstDnsServerAddress, entry);
    }
    for (const FakeRoute& route : routes)
        if (route.index == adapter.index && zelk::IpPrefix::Parse(route.destination).value().length == 0)
        {
            IP_ADAPTER_GATEWAY_ADDRESS entry = {};
            entry.Address = SocketAddress(route.nextHop);
            Append(record.FirstGatewayAddress, entry);
        }
    if (!adapter.dhcpServer.empty())
        record.Dhcpv4Server = SocketAddress(adapter.dhcpServer);
    record.Length = adapter.old ? offsetof(IP_ADAPTER_ADDRESSES, TransmitLinkSpeed) : sizeof(record);
    std::memset(reinterpret_cast<BYTE*>(&record) + record.Length, FOREIGN, sizeof(record) - record.Length);
}

DWORD FakeWindows::Adapters(ULONG flags, IP_ADAPTER_ADDRESSES* table, ULONG* size)
{
    if (const DWORD code = Count("GetAdaptersAddresses"))
        return code;
    EXPECT_EQ(majorVersion >= 6, (flags & (GAA_FLAG_INCLUDE_ALL_INTERFACES | GAA_FLAG_INCLUDE_GATEWAYS)) != 0);
    if ((flags & GAA_FLAG_INCLUDE_ALL_INTERFACES) != 0 && failures.contains("GAA_FLAG_INCLUDE_ALL_INTERFACES"))
        return failures["GAA_FLAG_INCLUDE_ALL_INTERFACES"];
    if (adapters.empty())
        return ERROR_NO_DATA;
    constexpr std::size_t ROOM = 2048; // the platform's records have their lists and texts behind them
    if (*size < adapters.size() * ROOM || growths-- > 0)
    {
        *size = static_cast<ULONG>(*size + adapters.size() * ROOM);
        return ERROR_BUFFER_OVERFLOW;
    }
    for (std::size_t i = 0; i < adapters.size(); ++i)
    {
        Fill(adapters[i], table[i]);
        table[i].Next = i + 1 < adapters.size() ? &table[i + 1] : nullptr;
    }
    return NO_ERROR;
}

/// What the function answers before it fills the table: it is to fail, or needs room for a row of each adapter.
template <class Table>
DWORD FakeWindows::Answer(const char* function, const Table* table, ULONG* size)
{
    const auto needed = static_cast<ULONG>(sizeof(*table) + adapters.size() * sizeof(*table->table));
    const DWORD code = Count(function);
    if (code != NO_ERROR || *size >= needed)
        return code;
    *size = needed;
    return ERROR_INSUFFICIENT_BUFFER;
}

/// Of each adapter the first address.
DWORD FakeWindows::OldAddresses(MIB_IPADDRTABLE* table, ULONG* size)
{
    if (const DWORD code = Answer("GetIpAddrTable", table, size))
        return code;
    table->dwNumEntries = 0;
    for (const FakeAdapter& adapter : adapters)
    {
        const auto prefix = zelk::IpPrefix::Parse(adapter.addresses.at(0).prefix).value();
        MIB_IPADDRROW& row = table->table[table->dwNumEntries++];
        row.dwIndex = adapter.index;
        row.dwAddr = SocketInet(prefix.address.ToText()).Ipv4.sin_addr.s_addr;
        row.dwMask = adapter.prefixes ? MaskOf(prefix) : NO_MASK;
    }
    return NO_ERROR;
}

DWORD FakeWindows::OldInterfaces(MIB_IFTABLE* table, ULONG* size)
{
    if (const DWORD code = Answer("GetIfTable", table, size))
        return code;
    table->dwNumEntries = 0;
    for (const FakeAdapter& adapter : adapters)
    {
        MIB_IFROW& row = table->table[table->dwNumEntries++];
        row = {};
        row.dwIndex = adapter.index;
        row.dwSpeed = 100000000;
        row.dwOperStatus = adapter.media == MediaConnectStateConnected ? MIB_IF_OPER_STATUS_OPERATIONAL
                                                                       : MIB_IF_OPER_STATUS_DISCONNECTED;
    }
    return NO_ERROR;
}

void FakeWindows::PatchTables()
{
    ADD_PATCH(m_patches, GetIpAddrTable,
              [this](MIB_IPADDRTABLE* table, ULONG* size, BOOL) -> DWORD { return OldAddresses(table, size); });
    ADD_PATCH(m_patches, GetProcAddress,
              [this](auto, HMODULE, const char* name) -> FARPROC { return FunctionOf(name); });
    ADD_PATCH(m_patches, GetAdaptersAddresses,
              [this](ULONG, ULONG flags, void*, IP_ADAPTER_ADDRESSES* table, ULONG* size) -> ULONG {
                  return Adapters(flags, table, size);
              });
    ADD_PATCH(m_patches, GetIpForwardTable,
              [](MIB_IPFORWARDTABLE* table, ULONG* size, BOOL) -> DWORD { return OldRoutes(table, size); });
    ADD_PATCH(m_patches, GetIfTable,
              [this](MIB_IFTABLE* table, ULONG* size, BOOL) -> DWORD { return OldInterfaces(table, size); });
    ADD_PATCH(m_patches, DsRoleGetPrimaryDomainInformation, [this](auto, auto, BYTE** information) -> DWORD {
        const DWORD code = Count("DsRoleGetPrimaryDomainInformation");
        liveTables += code == NO_ERROR ? 1 : 0;
        *information = reinterpret_cast<BYTE*>(&role);
        return code;
    });
    ADD_PATCH(m_patches, DsRoleFreeMemory, [this](void*) { --liveTables; });
}

void FakeWindows::PatchDevices()
{
    ADD_PATCH(m_patches, SetupDiGetClassDevsW, [this](const GUID*, const wchar_t*, HWND, DWORD) -> HDEVINFO {
        const DWORD code = Count("SetupDiGetClassDevs");
        ::SetLastError(code);
        return code == NO_ERROR ? DEVICES : INVALID_HANDLE_VALUE;
    });
    ADD_PATCH(m_patches, SetupDiDestroyDeviceInfoList, [this](HDEVINFO) -> BOOL { return ++calls["Destroy"]; });
    ADD_PATCH(m_patches, SetupDiEnumDeviceInfo, [this](HDEVINFO, DWORD i, SP_DEVINFO_DATA* data) -> BOOL {
        const DWORD code = Count("SetupDiEnumDeviceInfo");
        ::SetLastError(code != NO_ERROR ? code : ERROR_NO_MORE_ITEMS);
        data->DevInst = i;
        return code == NO_ERROR && i < devices.size();
    });
    ADD_PATCH(m_patches, SetupDiGetDeviceInstanceIdW,
              [this](HDEVINFO, SP_DEVINFO_DATA* data, wchar_t* text, DWORD size, DWORD* needed) -> BOOL {
                  const DWORD code = Count("SetupDiGetDeviceInstanceId");
                  ::SetLastError(code);
                  return code == NO_ERROR &&
                         CopyText(Wide(devices[data->DevInst].instance), text, size * 2, needed) == NO_ERROR;
              });
    ADD_PATCH(m_patches, SetupDiGetDeviceRegistryPropertyW,
              [this](HDEVINFO, SP_DEVINFO_DATA* data, DWORD property, DWORD* type, BYTE* buffer, DWORD size,
                     DWORD* needed) -> BOOL {
                  if (const DWORD code = Count("SetupDiGetDeviceRegistryProperty"))
                      return ::SetLastError(code), FALSE;
                  const FakeDevice& device = devices[data->DevInst];
                  *type = device.type;
                  const bool driver = property == SPDRP_DRIVER;
                  if ((driver ? device.driver : device.description).empty())
                      return ::SetLastError(ERROR_INVALID_DATA), FALSE;
                  const std::wstring text = driver ? NETWORK.substr(1) + Wide(device.driver) : Wide(device.description);
                  ::SetLastError(CopyText(text, reinterpret_cast<wchar_t*>(buffer), size, needed));
                  return ::GetLastError() == NO_ERROR;
              });
    ADD_PATCH(m_patches, CM_Get_DevNode_Status,
              [this](ULONG* status, ULONG* problem, DWORD device, ULONG) -> CONFIGRET {
                  if (Count("CM_Get_DevNode_Status") != NO_ERROR)
                      return CR_FAILURE;
                  *problem = devices[device].problem;
                  *status = *problem != 0 ? DN_HAS_PROBLEM : DN_STARTED;
                  return devices[device].result;
              });
}

void FakeWindows::PatchRegistry()
{
    ADD_PATCH(
        m_patches, RegOpenKeyExW,
        [this](auto original, HKEY parent, const wchar_t* path, DWORD options, REGSAM access, HKEY* key) -> LSTATUS {
            if (const DWORD code = Count("RegOpenKeyEx"))
                return static_cast<LSTATUS>(code);
            if (!deniedKey.empty() && std::wstring(path).find(deniedKey) != std::wstring::npos)
                return ERROR_ACCESS_DENIED;
            const LSTATUS result = original(parent, path, options, access, key);
            if (result == ERROR_SUCCESS)
                m_keys[*key] = path;
            return result;
        });
    ADD_PATCH(m_patches, RegCloseKey, [this](auto original, HKEY key) -> LSTATUS {
        m_keys.erase(key);
        return original(key);
    });
    ADD_PATCH(m_patches, RegEnumValueW,
              [this](auto original, HKEY key, DWORD i, wchar_t* name, DWORD* length, DWORD* reserved, DWORD* type,
                     BYTE* data, DWORD* size) -> LSTATUS {
                  if (const DWORD code = Count("RegEnumValue"))
                      return static_cast<LSTATUS>(code);
                  const bool gone = !goneKey.empty() && i > 0 && m_keys[key].find(goneKey) != std::wstring::npos;
                  return gone ? ERROR_KEY_DELETED : original(key, i, name, length, reserved, type, data, size);
              });
    ADD_PATCH(m_patches, RegQueryInfoKeyW,
              [this](decltype(&::RegQueryInfoKeyW) original, auto... arguments) -> LSTATUS {
                  if (const DWORD code = Count("RegQueryInfoKey"))
                      return static_cast<LSTATUS>(code);
                  const LSTATUS result = original(arguments...);
                  if (valuesHaveGrown) // the longest name and the largest data are those of a moment ago
                      *std::get<8>(std::tie(arguments...)) = *std::get<9>(std::tie(arguments...)) = 0;
                  return result;
              });
    ADD_PATCH(m_patches, RegEnumKeyExW, [this](decltype(&::RegEnumKeyExW) original, auto... arguments) -> LSTATUS {
        const auto code = static_cast<LSTATUS>(Count("RegEnumKeyEx"));
        return code != ERROR_SUCCESS ? code : original(arguments...);
    });
}
