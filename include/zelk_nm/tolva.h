#pragma once

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <netioapi.h>
#include <windows.h>

#include <setupapi.h>

#include <iosfwd>
#include <memory>
#include <vector>

#include <zelk_nm/export.h>
#include <zelk_nm/ip_address.h>
#include <zelk_nm/network_error.h>
#include <zelk_nm/string.h>

class AbstractNetworkAPI;

/// The library's whole interface. Its operations are static: they take an adapter record or a value and answer true or
/// false. Why an operation failed stands only in the trace file, TOLVA_trace.log, which every operation writes.
///
/// Common to every operation:
/// - It runs and blocks on the caller's thread; the library starts none.
/// - No exception leaves it. Something unforeseen, out of memory included, is traced at error level and answered false.
/// - Out-values are written on success; what a failure leaves in them is said where it is not "unchanged".
/// - A step that fails after others have changed something does not undo them.
/// - It may be called from several threads, each with records of its own. Before Vista those that read or change routes
///   and addresses want one caller at a time: they share tables that are read once in the process.
///
/// No object is needed to call them.
class ZELK_NM_API TOLVA
{
public:
    /// Which property GetModuleProperty reads.
    enum TOLVA_GMP_CAT : unsigned int
    {
        TOLVA_GMP_DESCRIPTION = 1,
        TOLVA_GMP_VERSION = 2
    };

    /// Address family of a question or a change; the values are the platform's AF_UNSPEC, AF_INET and AF_INET6.
    enum FAMILY_TYPE : unsigned int
    {
        FAMILY_BOTH = 0,
        FAMILY_IPV4 = 2,
        FAMILY_IPV6 = 23
    };

    /// Operational state of an adapter, numbered like the platform's IF_OPER_STATUS.
    enum TOLVA_OPER_STATUS : unsigned int
    {
        OPER_STATUS_UP = 1,
        OPER_STATUS_DOWN = 2,
        OPER_STATUS_TESTING = 3,
        OPER_STATUS_UNKNOWN = 4,
        OPER_STATUS_DORMANT = 5,
        OPER_STATUS_NOT_PRESENT = 6,
        OPER_STATUS_LOWER_LAYER_DOWN = 7
    };

    /// One network adapter, as GetAdapterList fills it. The interface index is no part of it: it can change while the
    /// machine runs, so GetAdapterIndex looks it up from the GUID each time. The order of the fields is part of the
    /// binary interface.
    struct NIC_INFO
    {
        velmor::string sNicDesc;         ///< driver description
        velmor::string sNicFriendlyName; ///< connection name, as the adapter-address table gives it
        velmor::string sNicEnum;         ///< subkey under the network class key, such as "0007"
        velmor::string sNicGuid;         ///< adapter GUID with its braces
        velmor::string sNicName;         ///< device name: "\DEVICE\TCPIP_" and the GUID
        velmor::string sNicPci;          ///< Plug and Play device instance path
        velmor::string sNicType;         ///< "ETHERNET", "TOKENRING", "FDDI", "PPP", "LOOPBACK", "SLIP" or "OTHER"
        velmor::string sNicHwAddr;       ///< hardware address in the text form of HARDWARE_ADDRESS
    };

    // An address in a record that nobody has filled is invalid, not 0.0.0.0: that would be a destination.

    /// One unicast address of an adapter.
    struct ASSOC_IP_ADDR
    {
        bool bAutomatic = false; ///< not configured by hand (DHCP, router advertisement, link layer, random)
        velmor::ip_address IpAddress{SOCKADDR_INET{}}; ///< the address, IPv4 or IPv6
        unsigned char SubnetPrefix = 0;                ///< on-link prefix length: 0 to 32, or 0 to 128 for IPv6
        unsigned long ulIndex = 0;                     ///< interface index of the adapter that holds the address
        NL_DAD_STATE enDadState = IpDadStateInvalid;   ///< duplicate-address detection; always 0 before Vista
        SCOPE_ID ScopeId = {};                         ///< zone and level; always 0 before Vista
    };

    /// One entry of the routing table.
    struct ROUTE_INFO
    {
        unsigned long ulIndex = 0;                       ///< interface index
        velmor::ip_address Destination{SOCKADDR_INET{}}; ///< destination network
        unsigned char PrefixLength = 0;                  ///< of the destination; 0 marks a default route
        velmor::ip_address NextHop{SOCKADDR_INET{}};     ///< gateway
        unsigned long ulMetric = 0;                      ///< route metric
    };

    /// A link-layer (MAC) address of 0 to 8 bytes.
    class ZELK_NM_API HARDWARE_ADDRESS
    {
    public:
        static constexpr unsigned int MAX_BYTES = 8;

        /// Empty: no bytes.
        HARDWARE_ADDRESS() noexcept;
        /// Takes the first 8 of `count` bytes. A null pointer or a count of 0 gives an empty address, with the reason
        /// in the trace.
        HARDWARE_ADDRESS(const unsigned char* pByteArray, unsigned int count) noexcept;
        /// Parses 6 to 8 sections of at most two hexadecimal digits; any other character separates, and a section
        /// without digits is a 0 byte. Any other text gives an empty address, with the reason in the trace.
        explicit HARDWARE_ADDRESS(const velmor::string& sHwAddr) noexcept;
        HARDWARE_ADDRESS(const HARDWARE_ADDRESS&) noexcept = default;
        HARDWARE_ADDRESS& operator=(const HARDWARE_ADDRESS&) noexcept = default;

        /// Fills `count` bytes: up to 8 of the address, those beyond its own length 0, then 0. A null pointer or a
        /// count of 0 copies nothing.
        void copy(unsigned char* pByteArray, unsigned int count) const noexcept;
        /// Number of bytes in use, 0 to 8.
        [[nodiscard]] unsigned int size() const noexcept;

        bool operator==(const HARDWARE_ADDRESS& other) const noexcept;
        bool operator!=(const HARDWARE_ADDRESS& other) const noexcept { return !(*this == other); }

        /// Upper-case hexadecimal pairs joined by "-", such as 00-1A-2B-3C-4D-5E; empty for an empty address. Throws
        /// std::bad_alloc when there is no memory.
        operator velmor::string() const;

    private:
        /// Null on success, or the reason why the text is no hardware address.
        const char* Parse(const velmor::string& sHwAddr) noexcept;

        unsigned char m_bByteArray[MAX_BYTES];
        unsigned int m_uiByteCount;
    };

    /// Network adapters of the NDIS LAN device-interface class, {AD498944-762F-11D0-8DCB-00C04FC3358C}.
    static const GUID NIC_DEVICECLASS_GUID;

    // ---- Lifecycle and module --------------------------------------------------------------------------------------

    /// Re-reads the trace level from trace.ini, empties the trace file and writes the module's version and description
    /// into it. Each construction does so: whatever was traced before is lost.
    TOLVA();
    ~TOLVA();
    TOLVA(const TOLVA&) = default;
    /// Copies nothing: there is nothing to copy.
    TOLVA& operator=(const TOLVA&);

    /// TOLVA_GMP_DESCRIPTION: the library's name with the date and time of its build. TOLVA_GMP_VERSION: the file
    /// version of ZELK_NM.DLL, or "Error" when it cannot be read. Returns 0; 1 for any other category, or when memory
    /// runs out, with `value` unchanged.
    static unsigned int GetModuleProperty(TOLVA_GMP_CAT cat, velmor::string& value);

    /// The "FileVersion" of the module `sDllName`, which must be loaded in this process; "Error" when it cannot be
    /// read. An empty name leaves `sVersion` unchanged. Writes the version into Version.log in the product's log
    /// directory (GetLogDir), section `sDllName`, key "Version", if that directory exists.
    static void GetResourceVersionStr(const velmor::string& sDllName, velmor::string& sVersion);

    /// The directory of the process's executable, without a backslash at the end. Writes no trace.
    static bool GetOwnDir(velmor::string& sDir);

    /// The product's log directory: zlk.ini beside the executable, section "File Locations", key "Log Files", or
    /// "X:\Program Files\Velmor\ZELK\Logfiles". It need not exist. It is not the trace file's directory, which has
    /// another key and another default. Fails where GetOwnDir fails. Writes no trace.
    static bool GetLogDir(velmor::string& sDir);

    /// Makes a new empty file in the directory for temporary files and gives its full name. The caller owns the file
    /// and deletes it. Fails when there is no such directory or no file can be made in it.
    static bool GetTempFilename(velmor::string& sFilename);

    // ---- Conversions -----------------------------------------------------------------------------------------------
    // 32-bit addresses and masks are in host byte order: 192.168.1.10 is 0xC0A8010A.

    /// 0xFFFFFFFF when the address is invalid or not IPv4.
    static unsigned long ConvertIpAddressToDword(velmor::ip_address ip);
    static velmor::ip_address ConvertDwordToIpAddress(unsigned long dwIp);
    /// 32 less the number of trailing zero bits: holes in the mask are not noticed, and the mask 0 gives 0.
    static unsigned char ConvertDwordToPrefix(unsigned long dwNetmask);
    /// The mask of a prefix length of 0 to 32 bits; 0 for a greater one.
    static unsigned long ConvertPrefixToDword(unsigned char prefix);
    /// The mask's prefix length in bits; 32 for a mask that is no IPv4 address.
    static unsigned char ConvertNetmaskToPrefix(const velmor::ip_address& netmask);
    static velmor::ip_address ConvertPrefixToNetmask(unsigned char prefix);
    /// IPv4 0.0.0.0 for a null pointer, a family other than AF_INET and AF_INET6, or a structure shorter than its
    /// family's.
    static velmor::ip_address Convert_SOCKET_ADDRESS(const SOCKET_ADDRESS& sa);
    /// IPv4 0.0.0.0 for a family other than AF_INET and AF_INET6.
    static velmor::ip_address Convert_SOCKADDR_INET(const SOCKADDR_INET& sa);
    /// All zero (AF_UNSPEC) for an invalid address.
    static SOCKADDR_INET Convert_SOCKADDR_INET(const velmor::ip_address& ip);

    // ---- Discovery -------------------------------------------------------------------------------------------------

    /// Appends a record for every adapter enabled for IPv4, in the order of the interface table, and then completes
    /// every record of the list, the caller's own included, from the registry and the adapter-address table. What
    /// cannot be found out stays empty; each missing piece is a warning in the trace. Fails when the interface table
    /// cannot be read, also when no adapter is enabled for IPv4 (list unchanged), or when it holds a device name
    /// without a GUID in braces (the other adapters are appended, nothing is completed).
    static bool GetAdapterList(std::vector<NIC_INFO>& NicList);

    /// The interface index of the adapter, looked up by `sNicGuid`. Fails when the GUID is empty or the platform knows
    /// no such adapter; the index is then what the platform left in it.
    static bool GetAdapterIndex(const NIC_INFO& NicInfo, unsigned long& ulIndex);

    /// The connection name that netsh and ipconfig know the adapter by, looked up in the registry by `sNicGuid`. Fails
    /// when the GUID is empty or the connection has no name.
    static bool GetAdapterIpconfigName(const NIC_INFO& NicInfo, velmor::string& sIpconfigName);

    // The next operations look the adapter up by `sNicGuid` in a fresh copy of the adapter-address table. They fail
    // when the GUID is empty, the adapter has no interface index, or the table cannot be read or has no such adapter.

    /// Fails also for a state that the platform does not document.
    static bool GetAdapterOperStatus(const NIC_INFO& NicInfo, TOLVA_OPER_STATUS& enOperStatus);
    /// Which families are bound to the adapter: FAMILY_BOTH, FAMILY_IPV4 or FAMILY_IPV6.
    static bool AddressFamilySupported(const NIC_INFO& NicInfo, FAMILY_TYPE& enFamilyType);
    /// Empty for an adapter without a hardware address, such as a loopback.
    static bool GetHardwareAddress(const NIC_INFO& NicInfo, HARDWARE_ADDRESS& HwAddr);
    /// IPv4 0.0.0.0 for an adapter that has no DHCPv4 server, and on systems before Vista.
    static bool GetDhcpServer(const NIC_INFO& NicInfo, velmor::ip_address& DhcpServer);
    /// The DHCPv6 client's identity: the association's id and the client's DUID as hexadecimal pairs joined by "-",
    /// empty when it has none.
    static bool GetDhcpServer(const NIC_INFO& NicInfo, unsigned long& ulIAID, velmor::string& sDUID);
    /// Appends the servers of both families in their order of preference. The list is not cleared; a failure keeps the
    /// servers appended before it.
    static bool GetDnsServerList(const NIC_INFO& NicInfo, std::vector<velmor::ip_address>& DnsServerList);

    // ---- Device control --------------------------------------------------------------------------------------------

    /// Whether the driver exposes the NDIS LAN device interface, found by `sNicPci` in the registry without regard to
    /// case. Fails, with the answer false, when `sNicPci` is empty or the device classes cannot be enumerated.
    static bool CanChangeAdapterOptions(const NIC_INFO& NicInfo, bool& bCanChangeOptions);

    // The operations on a record find the device by `sNicPci` and fail when it is empty. All need an elevated caller.

    /// Starts or stops the adapter's device and blocks until that is done. They fail when the device is not found or
    /// its driver refuses.
    static bool EnableAdapter(const NIC_INFO& NicInfo);
    static bool DisableAdapter(const NIC_INFO& NicInfo);
    /// Gives a device of a set the new state: 1 (DICS_ENABLE) or 2 (DICS_DISABLE). `hDevInfo` stays the caller's.
    static bool AdapterStateChange(unsigned long ulNewState, unsigned long ulMemberIndex, HDEVINFO hDevInfo);
    /// Writes the address as the driver's "NetworkAddress", below the class key that `sNicEnum` names (it fails when
    /// that is empty), and restarts the device, which then uses it. An empty address is written as empty text. When the
    /// device cannot be restarted the value stays written.
    static bool SetHardwareAddress(const NIC_INFO& NicInfo, const HARDWARE_ADDRESS& HwAddr);
    /// Shows the system's property sheet of the device and blocks until the user closes it; one caller at a time. A
    /// system without the sheet is no failure.
    static bool ChangeAdapterOptions(const NIC_INFO& NicInfo);

    /// The IPv6 TCP connections. `ulSize` is the size of the buffer in bytes and receives the size needed. Returns a
    /// Windows error code; 1 (ERROR_INVALID_FUNCTION) where the system has no such table.
    static unsigned long GetTcp6Table(MIB_TCP6TABLE* pTcpTable, unsigned long& ulSize, bool bSort);

    // ---- Routes and addresses --------------------------------------------------------------------------------------
    // They fail when `sNicGuid` is empty.

    /// Appends the adapter's routes: of both families, or IPv4 alone before Vista, where they are those of the first
    /// call in the process. Fails also when the adapter has no interface index or the table cannot be read.
    static bool GetAdapterRoutes(const NIC_INFO& NicInfo, std::vector<ROUTE_INFO>& Routes);
    /// Adds a route to the interface `Route.ulIndex`; needs an elevated caller. A metric that the system refuses is
    /// raised by one until it is taken. A route that exists already is success from Vista on. Before Vista an IPv6
    /// route fails.
    static bool AddAdapterRoute(const NIC_INFO& NicInfo, const ROUTE_INFO& Route);
    /// Appends the adapter's unicast addresses. Before Vista: IPv4 alone, those of the first call in the process, and
    /// true even when they cannot be read. Later systems fail then, and for an adapter without an interface index.
    static bool GetAdaptersIpAddrs(const NIC_INFO& NicInfo, std::vector<ASSOC_IP_ADDR>& IpAddrs);

    // ---- IP configuration ------------------------------------------------------------------------------------------
    // All fail when `sNicGuid` is empty, but where another field is named; those that take a family fail for a value
    // that is none, but where it says otherwise. Those that change something need an elevated caller.

    /// Replaces the adapter's addresses of every family that the list has by those of the list; of a record the address
    /// counts, and for IPv4 the prefix length. Addresses of the other family stay. Where DHCP is on for every family of
    /// the list its leases are released first; that this fails stops nothing. Fails, with nothing changed, for a list
    /// without IPv4 and IPv6 addresses. When a current address cannot be removed nothing is added; when one cannot be
    /// added the others stay. Removed addresses are not restored.
    /// From Vista on a command runs for each address, for which it blocks, and each IPv4 address replaces the one
    /// before it, so that of several the last remains. Before Vista the current addresses are those of the first call
    /// in the process, and IPv6 addresses are passed over.
    static bool SetAdaptersIpAddrs(const NIC_INFO& NicInfo, const std::vector<ASSOC_IP_ADDR>& IpAddrs);

    /// Whether the adapter is a DHCP client by its registry values; of both families only when it is for both. Fails
    /// when a value that is asked for cannot be read.
    static bool IsDhcpEnabled(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bDhcpEnabled);
    /// Renew and release the lease by the system's ipconfig, and block until it ends, which can take a minute a family.
    /// Of both families IPv4 comes first, and its failure leaves IPv6 as it is. ReleaseDhcp asks for `sNicName`
    /// first; both find the connection's name by `sNicGuid`.
    static bool RenewDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);
    static bool ReleaseDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);
    /// Makes a static adapter a DHCP client: removes its addresses, writes "EnableDHCP" (for IPv6 alone nothing),
    /// restarts the device and renews the lease; blocks meanwhile. An adapter that is one already is left as it is, and
    /// is success. An address that cannot be removed and a device that cannot be restarted do not stop it. Of both
    /// families one that is static is enough for the addresses of both to be removed. Fails, with nothing changed,
    /// where IsDhcpEnabled fails or the addresses cannot be read.
    static bool ReturnToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// Appends the next hops of the adapter's default routes. The family is checked but does not filter: gateways of
    /// both are returned.
    static bool GetDefaultGatewayList(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType,
                                      std::vector<velmor::ip_address>& Gateways);
    /// Replaces the adapter's default routes of the gateway's family by one through the gateway, and keeps it in the
    /// registry. When that fails the route stays. Before Vista give it IPv4 alone: an IPv6 gateway is not refused, and
    /// costs the IPv4 default route.
    static bool SetDefaultGateway(const NIC_INFO& NicInfo, const velmor::ip_address& Gateway);
    /// Whether no static gateway is kept in the registry. An IPv6 gateway that SetDefaultGateway has written counts as
    /// none.
    static bool IsGatewayAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic);
    /// Empties the static gateway lists in the registry: that of IPv4 for every family, that of IPv6 unless it is for
    /// IPv4 alone. Routes stay.
    static bool ReturnGatewayToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// Makes these the adapter's static DNS servers, in their order of preference: the list of both families in the
    /// registry, and the first at once by the system's netsh, for which it blocks. An empty list is success and changes
    /// nothing. Invalid addresses are left out; when the first is one, the operation fails after the registry was
    /// written.
    static bool SetDnsServerList(const NIC_INFO& NicInfo, const std::vector<velmor::ip_address>& DnsServerList);
    /// Whether no static servers are kept in the registry. A family that is none is no failure; its answer is false.
    static bool IsDnsAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic);
    /// Empties the static list in the registry. Nothing else changes until the adapter is configured anew.
    static bool ReturnDnsToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    // ---- Adapter properties ----------------------------------------------------------------------------------------
    // They fail when `sNicGuid` is empty.

    /// What the driver shows for its speed and duplex setting, found below the class key `sNicEnum` (it fails when that
    /// is empty). For a driver without a setting the measured speed, such as "100.0 Mbps", or "Unknown". Fails when the
    /// driver has a setting but no text for it.
    static bool GetAdapterSpeed(const NIC_INFO& NicInfo, velmor::string& sAdapterSpeed);
    /// The measured speed in megabits per second; at most 4294.967295, which the platform's number holds. Fails when
    /// the adapter has no interface index or the platform refuses.
    static bool GetAdapterLinkSpeed(const NIC_INFO& NicInfo, double& dSpeed);
    /// The connection-specific DNS domain; empty when there is none.
    static bool GetAdapterDomain(const NIC_INFO& NicInfo, velmor::string& sDomain);
    /// Whether IPv4 addresses itself where no DHCP server answers; true when nothing is set.
    static bool GetAutoconfigStatus(const NIC_INFO& NicInfo, bool& bIsAutoConfig);
    /// Whether NetBIOS over TCP/IP is enabled, by the adapter's own setting or DHCP's; true when nothing is set.
    static bool GetNetBIOSOverTcpipStatus(const NIC_INFO& NicInfo, bool& bUseNetBIOSOverTcpip);

    // ---- Machine identity ------------------------------------------------------------------------------------------
    // Reads ask the running system. Writes need an elevated caller.

    static bool GetComputerNameW(velmor::string& sComputerName);
    static bool GetPrimaryDnsSuffix(velmor::string& sPrimaryDnsSuffix);
    static bool GetFullComputerName(velmor::string& sFullComputerName);
    /// Written into the registry and taken by the system at its next start. The name is not checked. When the second of
    /// the two values cannot be written the first stays.
    static bool SetComputerNameW(const velmor::string& sComputerName);
    /// Like SetComputerNameW. An empty suffix clears it.
    static bool SetPrimaryDnsSuffix(const velmor::string& sPrimaryDnsSuffix);
    /// On a member of a domain the domain's short name.
    static bool GetWorkgroupName(velmor::string& sWorkgroupName);
    /// Set through the local security authority. Fails for an empty name and for one of more than 32766 characters.
    static bool SetWorkgroupName(const velmor::string& sWorkgroupName);

    // ---- Diagnostic printers ---------------------------------------------------------------------------------------
    // Each writes one word or phrase into the stream's buffer. The stream's state is not changed.

    static void PrintAdapterStatus(std::wofstream& ofs, TOLVA_OPER_STATUS enOperStatus);
    static void PrintDadState(std::wofstream& ofs, NL_DAD_STATE enDadState);
    static void PrintScopeId(std::wofstream& ofs, const SCOPE_ID& ScopeId);

    // The library's own parts, incomplete for callers.
    class Wrap_IP_INTERFACE_INFO;
    class Wrap_IP_ADAPTER_ADDRESSES;
    class Wrap_DEVMGR_DLL;

private:
    /// Keeps Winsock 2.0 started from its construction to its destruction.
    class SockDrawer
    {
    public:
        SockDrawer() noexcept;
        ~SockDrawer();
        SockDrawer(const SockDrawer&) = delete;
        SockDrawer& operator=(const SockDrawer&) = delete;
    };

    static AbstractNetworkAPI* NetworkApiFactory();

    template <class Call>
    static bool AskBackEnd(const char* pszName, Call&& call) noexcept;

    static bool AddIpAddr(const NIC_INFO& NicInfo, const ASSOC_IP_ADDR& IpAddr);
    static bool DeleteIpAddr(const NIC_INFO& NicInfo, const ASSOC_IP_ADDR& IpAddr);
    static bool InstallDefaultGateway(const NIC_INFO& NicInfo, const velmor::ip_address& Gateway);

    static void CompleteAdapter(NIC_INFO& NicInfo);
    static bool GetAdapterEnumAndDesc(NIC_INFO& NicInfo);
    static bool GetAdapterPCI(NIC_INFO& NicInfo);
    static bool GetAdapterFriendlyName(NIC_INFO& NicInfo);
    static bool GetAdapterType(NIC_INFO& NicInfo);

    static const SockDrawer sd;
    static std::unique_ptr<AbstractNetworkAPI> m_pNetworkAPI;
};
