#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <netioapi.h>
#include <windows.h>

#include <cfgmgr32.h>
#include <dsrole.h>
#include <setupapi.h>

#include <nlohmann/json.hpp>
#include <state/values/ip_prefix.h>
#include <support/import_patch.h>
#include <support/registry_scope.h>

/// A unicast address in the tables.
struct FakeAddress
{
    std::string prefix; ///< "192.0.2.10/24"
    NL_PREFIX_ORIGIN prefixOrigin = IpPrefixOriginManual;
    NL_SUFFIX_ORIGIN suffixOrigin = IpSuffixOriginManual;
    ULONG lifetime = 0xFFFFFFFF;
    NL_DAD_STATE dadState = IpDadStatePreferred;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FakeAddress, prefix, prefixOrigin, suffixOrigin, lifetime, dadState)

/// An adapter as the tables of IP Helper show it.
struct FakeAdapter
{
    ULONG index = 0;
    std::string guid;   ///< empty: none
    std::string name;   ///< empty: none
    std::string subkey; ///< of the class, where it is installed
    bool ipv4 = true;
    bool ipv6 = true;
    bool dhcp = false;
    IFTYPE type = IF_TYPE_ETHERNET_CSMACD;
    IF_OPER_STATUS status = IfOperStatusUp;
    NET_IF_MEDIA_CONNECT_STATE media = MediaConnectStateConnected;
    bool filter = false;
    bool hardware = true;
    bool old = false;     ///< its records end as before Vista
    bool prefixes = true; ///< whether the tables tell its prefixes and masks
    ULONG duidLength = 0;
    std::string dhcpServer = {};
    std::vector<FakeAddress> addresses = {};
    std::vector<std::string> dnsServers = {};
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FakeAdapter, index, guid, name, subkey, ipv4, ipv6, dhcp, type, status,
                                                media, filter, hardware, old, prefixes, duidLength, dhcpServer,
                                                addresses, dnsServers)

/// An installed device, as the device installer knows it.
struct FakeDevice
{
    std::string instance;
    std::string driver; ///< "0007", or empty
    ULONG problem = 0;
    CONFIGRET result = CR_SUCCESS;
    std::string description = "A device";
    DWORD type = REG_SZ; ///< of its properties
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FakeDevice, instance, driver, problem, result, description, type)

struct FakeRoute
{
    std::string destination;
    std::string nextHop;
    ULONG index = 0;
    ULONG metric = 0;
    NL_ROUTE_PROTOCOL protocol = RouteProtocolNetMgmt;
    NL_ROUTE_ORIGIN origin = NlroManual;
    ADDRESS_FAMILY otherFamily = 0; ///< by how much the family in its row is wrong
    BYTE excess = 0;                ///< by how much its prefix length is
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FakeRoute, destination, nextHop, index, metric, protocol, origin,
                                                otherFamily, excess)

/// A Windows with the tables and devices that a test puts into it, in place of the machine's while it lives. It behaves
/// as documented: sizes are asked for, tables are allocated and freed, functions of newer systems are missing on older
/// ones. The registry is the real one of the test prefix. One at a time.
class FakeWindows
{
public:
    FakeWindows();
    /// With the lists "adapters", "absent" ones that are only installed, "devices" and "routes".
    explicit FakeWindows(const nlohmann::json& machine);
    FakeWindows(const FakeWindows&) = delete;
    FakeWindows& operator=(const FakeWindows&) = delete;
    ~FakeWindows();

    std::vector<FakeAdapter> adapters;
    std::vector<FakeDevice> devices;
    std::vector<FakeRoute> routes;
    ULONG majorVersion = 10;
    DSROLE_PRIMARY_DOMAIN_INFO_BASIC role = {};
    std::map<std::string, DWORD> failures; ///< functions that fail, by name, with their code
    std::map<std::string, INT> cutSockets; ///< sizes of socket addresses that are cut off, by the address
    int failAt = 0;                        ///< that call from now on fails, once: access denied
    std::map<std::string, int> calls;      ///< how often functions were called
    int growths = 0;                       ///< how often a table has grown when it is asked for again
    int liveTables = 0;                    ///< allocated and not freed
    bool valuesHaveGrown = false;          ///< since the registry was asked for their sizes
    std::wstring goneKey;                  ///< a key with this in its path is deleted while it is read
    std::wstring deniedKey;                ///< a key with this in its path cannot be opened

    /// Writes what an installed system has of an adapter: its class subkey, its connection, the keys of TCP/IP.
    void Install(const FakeAdapter& adapter);
    [[nodiscard]] int AllCalls() const;

    // What the looked-up functions are led to.
    DWORD Count(const std::string& function);
    [[nodiscard]] FARPROC FunctionOf(const std::string& name) const;
    template <class Table, class Row>
    Table* Allocate(const std::vector<Row>& rows);

private:
    DWORD Adapters(ULONG flags, IP_ADAPTER_ADDRESSES* table, ULONG* size);
    template <class Table>
    DWORD Answer(const char* function, const Table* table, ULONG* size);
    DWORD OldAddresses(MIB_IPADDRTABLE* table, ULONG* size);
    DWORD OldInterfaces(MIB_IFTABLE* table, ULONG* size);
    void Fill(const FakeAdapter& adapter, IP_ADAPTER_ADDRESSES& record);
    void AddAddress(const FakeAddress& address, const FakeAdapter& adapter, IP_ADAPTER_ADDRESSES& record);
    SOCKET_ADDRESS SocketAddress(const std::string& text);
    template <class Record>
    void Append(Record*& first, Record record);
    void PatchTables();
    void PatchDevices();
    void PatchRegistry();

    std::map<HKEY, std::wstring> m_keys; ///< paths of those that are open
    std::deque<std::shared_ptr<void>> m_memory;
    std::unique_ptr<testing_support::RegistryKeyScope> m_control, m_services;
    testing_support::ImportPatches m_patches;
};

inline const std::wstring CONTROL = L"SYSTEM\\CurrentControlSet\\Control\\";
inline const std::wstring NETWORK = L"\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
inline const std::wstring SERVICES = L"SYSTEM\\CurrentControlSet\\services\\";

std::wstring Ipv4Key(const FakeAdapter& adapter);
std::wstring Ipv6Key(const FakeAdapter& adapter);

/// An adapter with this index, its GUID and its subkey made of it.
FakeAdapter MakeAdapter(ULONG index, const std::string& name);

/// Of no family for "none".
SOCKADDR_INET SocketInet(const std::string& text);
