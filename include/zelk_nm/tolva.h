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

/// @file
/// TOLVA, the class that every operation belongs to.

class AbstractNetworkAPI;

/// The library's whole interface. Its operations are static: they take an adapter record or a value and answer true or
/// false. Why an operation failed stands only in its trace file, TOLVA_trace.log (see @ref trace). No object is needed
/// to call them.
///
/// ### Common to every operation
///
/// - It runs and blocks on the caller's thread; the library starts none. Where nothing else is said it takes
///   milliseconds: it asks the system and waits for nobody but, for a trace line, another writer of the trace file.
/// - No exception leaves it. Something unforeseen, out of memory included, is traced at error level and answered false.
/// - Out-values are written on success; what a failure leaves in them is said where it is not "unchanged". Lists are
///   appended to.
/// - A step that fails after others have changed something does not undo them.
/// - Reading needs no elevation. What needs it is said, and fails without.
/// - It does the same on every system, but where "before Vista" is said. There routes and addresses come from the old
///   IPv4 tables of IP Helper.
///
/// ### Threads
///
/// Operations may run at the same time on several threads, each with records and lists of its own, with these
/// exceptions, which want one caller at a time:
/// - ChangeAdapterOptions;
/// - before Vista the operations of the group @ref routes, SetAdaptersIpAddrs, ReturnToDhcp, GetDefaultGatewayList and
///   SetDefaultGateway: they share tables that are read once in the process.
///
/// Two changes of the same adapter do not disturb the library but each other; their order is the caller's to keep. The
/// trace is shared by all threads and processes: each line is written under the named mutex "TOLVA_trace.log", for
/// which a line waits a minute at most and is then lost.
///
/// ### Loading and unloading
///
/// Loading moves the trace file of the previous load aside (waiting for other writers a second at most) and starts
/// Winsock. So the library must not be loaded, unloaded or called from another library's DllMain. It may be unloaded
/// when no operation runs; it leaves no thread and no handle behind.
///
/// ### Registry keys
///
/// The operations name these, all below `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet`:
/// - *IPv4 key*: `services\Tcpip\Parameters\Interfaces\<sNicGuid>`
/// - *IPv6 key*: `services\Tcpip6\Parameters\Interfaces\<sNicGuid>`
/// - *class key*: `Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\<sNicEnum>`
/// - *connection key*: `Control\Network\{4D36E972-E325-11CE-BFC1-08002BE10318}\<sNicGuid>\Connection`
///
/// Writing makes a key that is missing and needs elevation. Every operation that uses the registry also unloads, when
/// it ends, an offline SYSTEM hive that the host product has mounted; see @ref boot_images.
///
/// ### Commands
///
/// Changes that no function of the system makes are made by its commands netsh and ipconfig, which are found on the
/// path and run by CMD with their output in a temporary file (GetTempFilename). The operation blocks until the command
/// ends; there is no limit. An exit code other than 0 is failure, and the trace then has what the command printed.
class ZELK_NM_API TOLVA
{
public:
    /// Which property GetModuleProperty reads.
    enum TOLVA_GMP_CAT : unsigned int
    {
        TOLVA_GMP_DESCRIPTION = 1, ///< name and build time of the library
        TOLVA_GMP_VERSION = 2      ///< file version of the library
    };

    /// Address family of a question or a change; the values are the platform's AF_UNSPEC, AF_INET and AF_INET6.
    enum FAMILY_TYPE : unsigned int
    {
        FAMILY_BOTH = 0, ///< IPv4 and IPv6
        FAMILY_IPV4 = 2, ///< IPv4 alone
        FAMILY_IPV6 = 23 ///< IPv6 alone
    };

    /// Operational state of an adapter, numbered like the platform's IF_OPER_STATUS.
    enum TOLVA_OPER_STATUS : unsigned int
    {
        OPER_STATUS_UP = 1,              ///< passes packets
        OPER_STATUS_DOWN = 2,            ///< passes none
        OPER_STATUS_TESTING = 3,         ///< in a test
        OPER_STATUS_UNKNOWN = 4,         ///< not known
        OPER_STATUS_DORMANT = 5,         ///< waits for an event from outside
        OPER_STATUS_NOT_PRESENT = 6,     ///< a part is missing
        OPER_STATUS_LOWER_LAYER_DOWN = 7 ///< what it stands on is down
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
        velmor::string sNicName;         ///< device name: `\DEVICE\TCPIP_` and the GUID
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

    /// A link-layer (MAC) address of 0 to 8 bytes. Const access is safe from several threads.
    class ZELK_NM_API HARDWARE_ADDRESS
    {
    public:
        /// Most bytes that an address has.
        static constexpr unsigned int MAX_BYTES = 8;

        /// Empty: no bytes.
        HARDWARE_ADDRESS() noexcept;
        /// Takes the first 8 of `count` bytes. A null pointer or a count of 0 gives an empty address, with the reason
        /// in the trace.
        HARDWARE_ADDRESS(const unsigned char* pByteArray, unsigned int count) noexcept;
        /// Parses 6 to 8 sections of at most two hexadecimal digits; any other character separates, and a section
        /// without digits is a 0 byte. Any other text gives an empty address, with the reason in the trace.
        explicit HARDWARE_ADDRESS(const velmor::string& sHwAddr) noexcept;
        /// A copy.
        HARDWARE_ADDRESS(const HARDWARE_ADDRESS&) noexcept = default;
        /// A copy.
        HARDWARE_ADDRESS& operator=(const HARDWARE_ADDRESS&) noexcept = default;

        /// Fills `count` bytes: up to 8 of the address, those beyond its own length 0, then 0. A null pointer or a
        /// count of 0 copies nothing.
        void copy(unsigned char* pByteArray, unsigned int count) const noexcept;
        /// Number of bytes in use, 0 to 8.
        [[nodiscard]] unsigned int size() const noexcept;

        /// The same number of bytes, all equal. Two empty addresses are equal.
        bool operator==(const HARDWARE_ADDRESS& other) const noexcept;
        /// The opposite.
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

    /// @defgroup lifecycle Lifecycle and module
    /// The object itself, the module's version, and directories.
    /// @{

    /// Re-reads the trace level from trace.ini, empties the trace file and writes the module's version and description
    /// into it. Each construction does so: whatever was traced before is lost. Writes Version.log as
    /// GetResourceVersionStr does. Throws nothing.
    TOLVA();
    /// Traces its own end, and nothing else.
    ~TOLVA();
    /// Copies nothing: there is nothing to copy. Traces nothing either.
    TOLVA(const TOLVA&) = default;
    /// Copies nothing: there is nothing to copy.
    TOLVA& operator=(const TOLVA&);

    /// TOLVA_GMP_DESCRIPTION: the library's name with the date and time of its build. TOLVA_GMP_VERSION: the file
    /// version of ZELK_NM.DLL, or "Error" when it cannot be read, by GetResourceVersionStr. Returns 0; 1 for any other
    /// category, or when memory runs out, with `value` unchanged.
    static unsigned int GetModuleProperty(TOLVA_GMP_CAT cat, velmor::string& value);

    /// The "FileVersion" of the version resource, such as "1.0.0.0", of the module `sDllName`: the name or path of a
    /// file that is loaded in this process. "Error" when it cannot be read. An empty name leaves `sVersion` unchanged.
    /// Writes the version into Version.log in the product's log directory (GetLogDir), section `sDllName`, key
    /// "Version", if that directory exists.
    static void GetResourceVersionStr(const velmor::string& sDllName, velmor::string& sVersion);

    /// The directory of the process's executable, without a backslash at the end. Fails when the system does not tell
    /// it. Writes no trace.
    static bool GetOwnDir(velmor::string& sDir);

    /// The product's log directory: zlk.ini beside the executable, section "File Locations", key "Log Files", or
    /// `X:\Program Files\Velmor\ZELK\Logfiles`. It need not exist. It is not the trace file's directory, which has
    /// another key and another default. Fails where GetOwnDir fails. Writes no trace.
    static bool GetLogDir(velmor::string& sDir);

    /// Makes a new empty file in the user's directory for temporary files, which is made if it is missing, and gives
    /// its full name. The caller owns the file and deletes it. Fails when no file can be made there.
    static bool GetTempFilename(velmor::string& sFilename);

    /// @}
    /// @defgroup conversions Conversions
    /// 32-bit addresses and masks are in host byte order: 192.168.1.10 is 0xC0A8010A. Prefix lengths are in bits. These
    /// read and write nothing but the trace.
    /// @{

    /// 0xFFFFFFFF when the address is invalid or not IPv4.
    static unsigned long ConvertIpAddressToDword(velmor::ip_address ip);
    /// The IPv4 address of the number.
    static velmor::ip_address ConvertDwordToIpAddress(unsigned long dwIp);
    /// 32 less the number of trailing zero bits: holes in the mask are not noticed, and the mask 0 gives 0.
    static unsigned char ConvertDwordToPrefix(unsigned long dwNetmask);
    /// The mask of a prefix length of 0 to 32 bits; 0 for a greater one.
    static unsigned long ConvertPrefixToDword(unsigned char prefix);
    /// The mask's prefix length in bits; 32 for a mask that is no IPv4 address.
    static unsigned char ConvertNetmaskToPrefix(const velmor::ip_address& netmask);
    /// The mask, as an IPv4 address, of a prefix length of 0 to 32 bits; 0.0.0.0 for a greater one.
    static velmor::ip_address ConvertPrefixToNetmask(unsigned char prefix);
    /// IPv4 0.0.0.0 for a null pointer or a family other than AF_INET and AF_INET6. The length field is not read: the
    /// structure must be as long as its family's.
    static velmor::ip_address Convert_SOCKET_ADDRESS(const SOCKET_ADDRESS& sa);
    /// IPv4 0.0.0.0 for a family other than AF_INET and AF_INET6.
    static velmor::ip_address Convert_SOCKADDR_INET(const SOCKADDR_INET& sa);
    /// All zero (AF_UNSPEC) for an invalid address.
    static SOCKADDR_INET Convert_SOCKADDR_INET(const velmor::ip_address& ip);

    /// @}
    /// @defgroup discovery Discovery
    /// What adapters there are and how they stand. Nothing is changed.
    /// @{

    /// Appends a record for every adapter enabled for IPv4, in the order of the interface table (GetInterfaceInfo), and
    /// then completes every record of the list, the caller's own included: `sNicEnum` and "DriverDesc" from the class
    /// key whose "NetCfgInstanceId" is the GUID, `sNicPci` from its "DeviceInstanceID" or "PnpInstanceID" of the
    /// connection key, the rest from the adapter-address table. What cannot be found out stays empty; each missing
    /// piece is a warning in the trace. Fails when the interface table cannot be read, also when no adapter is enabled
    /// for IPv4 (list unchanged), or when it holds a device name without a GUID in braces (the other adapters are
    /// appended, nothing is completed).
    static bool GetAdapterList(std::vector<NIC_INFO>& NicList);

    /// The interface index of the adapter, which IP Helper's GetAdapterIndex gives for `\DEVICE\TCPIP_` and `sNicGuid`.
    /// Fails when the GUID is empty or the platform knows no such adapter; the index is then what the platform left in
    /// it.
    static bool GetAdapterIndex(const NIC_INFO& NicInfo, unsigned long& ulIndex);

    /// The connection name that netsh and ipconfig know the adapter by: "Name" of the connection key. Fails when the
    /// GUID is empty or the connection has no name.
    static bool GetAdapterIpconfigName(const NIC_INFO& NicInfo, velmor::string& sIpconfigName);

    /// @}
    /// @defgroup address_table Discovery by the adapter-address table
    /// These look the adapter up by `sNicGuid` (GetAdapterIndex) in a fresh copy of the adapter-address table
    /// (GetAdaptersAddresses). They fail when the GUID is empty, the adapter has no interface index, or the table
    /// cannot be read or has no such adapter.
    /// @{

    /// The operational state. Fails also for one that the platform does not document.
    static bool GetAdapterOperStatus(const NIC_INFO& NicInfo, TOLVA_OPER_STATUS& enOperStatus);
    /// Which families are bound to the adapter: FAMILY_BOTH or FAMILY_IPV4; FAMILY_IPV6 only where its IPv4 index is 0.
    /// Fails also for one with neither.
    static bool AddressFamilySupported(const NIC_INFO& NicInfo, FAMILY_TYPE& enFamilyType);
    /// Empty for an adapter without a hardware address, such as a loopback.
    static bool GetHardwareAddress(const NIC_INFO& NicInfo, HARDWARE_ADDRESS& HwAddr);
    /// The DHCPv4 server: IPv4 0.0.0.0 for an adapter that has none, and on systems before Vista.
    static bool GetDhcpServer(const NIC_INFO& NicInfo, velmor::ip_address& DhcpServer);
    /// The DHCPv6 client's identity: the association's id and the client's DUID as hexadecimal pairs joined by "-".
    /// They are 0 and empty when it has none, and on systems before Vista.
    static bool GetDhcpServer(const NIC_INFO& NicInfo, unsigned long& ulIAID, velmor::string& sDUID);
    /// Appends the servers of both families in their order of preference. The list is not cleared; a failure keeps the
    /// servers appended before it.
    static bool GetDnsServerList(const NIC_INFO& NicInfo, std::vector<velmor::ip_address>& DnsServerList);

    /// @}
    /// @defgroup device Device control
    /// The operations on a record find the device by `sNicPci`, its Plug and Play instance path, and fail when that is
    /// empty. All but CanChangeAdapterOptions need an elevated caller. A network that runs over the adapter is cut off
    /// meanwhile.
    /// @{

    /// Whether the driver exposes the NDIS LAN device interface: whether a subkey of
    /// `Control\DeviceClasses\{AD498944-762F-11D0-8DCB-00C04FC3358C}` has `sNicPci` as its "DeviceInstance", without
    /// regard to case. Fails, with the answer false, when `sNicPci` is empty or the device classes cannot be
    /// enumerated.
    static bool CanChangeAdapterOptions(const NIC_INFO& NicInfo, bool& bCanChangeOptions);

    /// Starts the adapter's device by the device installer and blocks until that is done, which can take seconds. Fails
    /// when the device is not found or its driver refuses.
    static bool EnableAdapter(const NIC_INFO& NicInfo);
    /// Stops the adapter's device, like EnableAdapter.
    static bool DisableAdapter(const NIC_INFO& NicInfo);
    /// Gives a device of a set the new state: 1 (DICS_ENABLE) or 2 (DICS_DISABLE), in all hardware profiles. The device
    /// is the one at `ulMemberIndex`, counted from 0. `hDevInfo` stays the caller's. Blocks and fails like
    /// EnableAdapter.
    static bool AdapterStateChange(unsigned long ulNewState, unsigned long ulMemberIndex, HDEVINFO hDevInfo);
    /// Writes the address, as text such as 02-1A-2B-3C-4D-5E, as the driver's "NetworkAddress" in the class key, and
    /// restarts the device (DisableAdapter, EnableAdapter), which then uses it; blocks meanwhile. An empty address is
    /// written as empty text. Fails also when `sNicEnum` is empty. When the device cannot be restarted the value stays
    /// written.
    static bool SetHardwareAddress(const NIC_INFO& NicInfo, const HARDWARE_ADDRESS& HwAddr);
    /// Shows the system's property sheet of the device (DeviceProperties_RunDLL of DEVMGR.DLL) and blocks until the
    /// user closes it; one caller at a time. A system without the sheet is no failure.
    static bool ChangeAdapterOptions(const NIC_INFO& NicInfo);

    /// @}
    /// @defgroup tcp6 TCP over IPv6
    /// @{

    /// The machine's TCP connections over IPv6, in the platform's GetTcp6Table, sorted with `bSort`. `ulSize` is the
    /// size of the buffer in bytes and receives the size needed. Returns a Windows error code: 0, 122
    /// (ERROR_INSUFFICIENT_BUFFER) when the buffer is too small, 1 (ERROR_INVALID_FUNCTION) where the system has no
    /// such table, as before Vista.
    static unsigned long GetTcp6Table(MIB_TCP6TABLE* pTcpTable, unsigned long& ulSize, bool bSort);

    /// @}
    /// @defgroup routes Routes and addresses
    /// They fail when `sNicGuid` is empty. From Vista on they ask the system's tables anew each time. Before Vista they
    /// know IPv4 alone, each reads its table on its first call in the process and answers from that copy for good, and
    /// they want one caller at a time.
    /// @{

    /// Appends the adapter's routes, of both families (GetIpForwardTable2; before Vista GetIpForwardTable). Fails also
    /// when the adapter has no interface index or the table cannot be read.
    static bool GetAdapterRoutes(const NIC_INFO& NicInfo, std::vector<ROUTE_INFO>& Routes);
    /// Adds a route to the interface `Route.ulIndex`, which need not be the record's; needs an elevated caller. It
    /// lives until the next start of the system. A metric that the system refuses as too low is raised by one until it
    /// is taken. A route that exists already is success from Vista on. Fails when the system has no such interface or
    /// refuses the route; before Vista for every IPv6 route.
    static bool AddAdapterRoute(const NIC_INFO& NicInfo, const ROUTE_INFO& Route);
    /// Appends the adapter's unicast addresses (GetUnicastIpAddressTable; before Vista GetIpAddrTable). Fails also when
    /// the adapter has no interface index or the table cannot be read; before Vista that is success without addresses.
    static bool GetAdaptersIpAddrs(const NIC_INFO& NicInfo, std::vector<ASSOC_IP_ADDR>& IpAddrs);

    /// @}
    /// @defgroup ipconfig IP configuration
    /// All fail when `sNicGuid` is empty, but where another field is named; those that take a family fail for a value
    /// that is none, but where it says otherwise. Those that change something need an elevated caller. What is written
    /// into the registry lasts; routes do not.
    /// @{

    /// Replaces the adapter's addresses of every family that the list has by those of the list; of a record the address
    /// counts, and for IPv4 the prefix length. Addresses of the other family stay. Where DHCP is on for every family of
    /// the list its leases are released first (ReleaseDhcp); that this fails stops nothing. Fails, with nothing
    /// changed, for a list without IPv4 and IPv6 addresses. When the current addresses cannot be read or one of them
    /// cannot be removed nothing is added; when one cannot be added the others stay; from Vista on an invalid one
    /// beside others is such. Removed addresses are not restored.
    ///
    /// From Vista on a command runs for each address, for which it blocks: `netsh interface ipv4 delete address` and
    /// `set address ... static`, `netsh interface ipv6 delete address ... persistent` and
    /// `set address ... unicast infinite infinite persistent`. Each IPv4 address replaces the one before it, so that of
    /// several the last remains. Before Vista it calls IP Helper (DeleteIPAddress and SetAdapterIpAddress), the current
    /// addresses are those of the first call in the process, IPv6 addresses are passed over, and one caller at a time
    /// is wanted.
    static bool SetAdaptersIpAddrs(const NIC_INFO& NicInfo, const std::vector<ASSOC_IP_ADDR>& IpAddrs);

    /// Whether the adapter is a DHCP client: for IPv4 when "EnableDHCP" of the IPv4 key is 1, for IPv6 when
    /// "Dhcpv6State" of the IPv6 key is not 0; of both families only when it is for both. Fails when a value that is
    /// asked for cannot be read.
    static bool IsDhcpEnabled(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bDhcpEnabled);
    /// Renews the lease by `ipconfig /renew` or `/renew6` with the connection's name (GetAdapterIpconfigName), and
    /// blocks until it ends, which can take a minute a family. Of both families IPv4 comes first, and its failure
    /// leaves IPv6 as it is. Fails when the connection has no name or the command fails.
    static bool RenewDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);
    /// Releases the lease by `ipconfig /release` or `/release6`, like RenewDhcp. It fails when `sNicName` is empty, and
    /// finds the connection's name by `sNicGuid` all the same.
    static bool ReleaseDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);
    /// Makes a static adapter a DHCP client: removes its addresses as SetAdaptersIpAddrs does, writes "EnableDHCP" of
    /// the IPv4 key (for IPv6 alone nothing), restarts the device by `sNicPci`, with half a second between stop and
    /// start, and renews the lease; blocks meanwhile. An adapter that is one already is left as it is, and is success.
    /// An address that cannot be removed and a device that cannot be restarted do not stop it. Of both families one
    /// that is static is enough for the addresses of both to be removed. Fails, with nothing changed, where
    /// IsDhcpEnabled fails or the addresses cannot be read; later where the registry cannot be written or RenewDhcp
    /// fails. Before Vista the addresses are those of the first call in the process, and one caller at a time is
    /// wanted.
    static bool ReturnToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// Appends the next hops of the adapter's default routes, by GetAdapterRoutes, whose failures and whose limits
    /// before Vista are its own. The family is checked but does not filter: gateways of both are returned.
    static bool GetDefaultGatewayList(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType,
                                      std::vector<velmor::ip_address>& Gateways);
    /// Replaces the adapter's default routes of the gateway's family by one through the gateway, with the metric of the
    /// first of them, raised while the system refuses it, and keeps the gateway as "DefaultGateway", the only text of a
    /// list, of the IPv4 or IPv6 key. Fails for an invalid gateway, where the adapter has no interface index, and where
    /// the system refuses to delete a route, to make the new one or to write the key; what was done until then stays.
    /// Before Vista the routes to delete are those of its first call in the process, one caller at a time is wanted,
    /// and only IPv4 may be given: an IPv6 gateway is not refused, and costs the IPv4 default route.
    static bool SetDefaultGateway(const NIC_INFO& NicInfo, const velmor::ip_address& Gateway);
    /// Whether "DefaultGateway" of the IPv4 or IPv6 key is missing or empty; of both families only when both are. An
    /// IPv6 gateway that SetDefaultGateway has written counts as none.
    static bool IsGatewayAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic);
    /// Empties "DefaultGateway": that of the IPv4 key for every family, that of the IPv6 key unless it is for IPv4
    /// alone. Routes stay. Fails where a key cannot be written.
    static bool ReturnGatewayToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// Makes these the adapter's static DNS servers, in their order of preference: all in the registry, as
    /// "NameServer", joined by commas, of the IPv4 key and of the IPv6 key, each replaced even by nothing; and the
    /// first at once by `netsh interface ipv4|ipv6 set dnsservers ... static`, for which it blocks. An empty list is
    /// success and changes nothing. Invalid addresses are left out; when the first is one, the operation fails after
    /// the registry was written, as it does when the connection has no name or the command fails.
    static bool SetDnsServerList(const NIC_INFO& NicInfo, const std::vector<velmor::ip_address>& DnsServerList);
    /// Whether "NameServer" of the IPv4 or IPv6 key is missing or empty; of both families only when both are. A family
    /// that is none is no failure; its answer is false.
    static bool IsDnsAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic);
    /// Empties "NameServer" of the IPv4 key, of the IPv6 key or of both. Nothing else changes until the adapter is
    /// configured anew. Fails where a key cannot be written.
    static bool ReturnDnsToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// @}
    /// @defgroup properties Adapter properties
    /// They fail when `sNicGuid` is empty, and change nothing.
    /// @{

    /// What the driver shows for its speed and duplex setting. The setting is the first of thirty names that the class
    /// key has, such as "*SpeedDuplex"; its text stands in `Ndi\params\<name>\Enum` or `Ndi\savedParams\<name>\Enum`
    /// below that key. For a driver without a setting the measured speed, such as "100.0 Mbps", or "Unknown". Fails
    /// when `sNicEnum` is empty or the driver has a setting but no text for it.
    static bool GetAdapterSpeed(const NIC_INFO& NicInfo, velmor::string& sAdapterSpeed);
    /// The measured speed (GetIfEntry) in megabits per second; at most 4294.967295, which the platform's number holds.
    /// Fails when the adapter has no interface index or the platform refuses.
    static bool GetAdapterLinkSpeed(const NIC_INFO& NicInfo, double& dSpeed);
    /// The connection-specific DNS domain, "Domain" of the IPv4 key; empty when there is none.
    static bool GetAdapterDomain(const NIC_INFO& NicInfo, velmor::string& sDomain);
    /// Whether IPv4 addresses itself where no DHCP server answers: whether "IPAutoconfigurationEnabled" of the IPv4 key
    /// is 1; true when nothing is set.
    static bool GetAutoconfigStatus(const NIC_INFO& NicInfo, bool& bIsAutoConfig);
    /// Whether NetBIOS over TCP/IP is enabled, which is 1 of "NetbiosOptions" or, where that is 0 or missing, of
    /// "DHCPNetbiosOptions", both in `services\NetBT\Parameters\Interfaces\Tcpip_<sNicGuid>`; true when nothing is set.
    static bool GetNetBIOSOverTcpipStatus(const NIC_INFO& NicInfo, bool& bUseNetBIOSOverTcpip);

    /// @}
    /// @defgroup identity Machine identity
    /// Reads ask the running system and fail when it does not answer. Writes need an elevated caller. Names written
    /// into the registry go below `services\Tcpip\Parameters` and are taken by the system at its next start.
    /// @{

    /// The DNS host name, without a suffix.
    static bool GetComputerNameW(velmor::string& sComputerName);
    /// The DNS domain of the machine; empty when it has none.
    static bool GetPrimaryDnsSuffix(velmor::string& sPrimaryDnsSuffix);
    /// Host name and suffix, joined by a dot.
    static bool GetFullComputerName(velmor::string& sFullComputerName);
    /// Writes "Hostname" and "NV Hostname". The name is not checked. When the second of the two values cannot be
    /// written the first stays.
    static bool SetComputerNameW(const velmor::string& sComputerName);
    /// Writes "Domain" and "NV Domain", like SetComputerNameW. An empty suffix clears it.
    static bool SetPrimaryDnsSuffix(const velmor::string& sPrimaryDnsSuffix);
    /// The workgroup; on a member of a domain the domain's short name.
    static bool GetWorkgroupName(velmor::string& sWorkgroupName);
    /// Sets the workgroup through the local security authority, nothing in the registry keys named here. Fails for an
    /// empty name, for one of more than 32766 characters, and where the authority refuses.
    static bool SetWorkgroupName(const velmor::string& sWorkgroupName);

    /// @}
    /// @defgroup printers Diagnostic printers
    /// Each writes one word or phrase into the stream's buffer. The stream's state is not changed; a value that has no
    /// word is written as "Unknown : " and its number. They write no trace and are as safe with threads as the stream.
    /// @{

    /// "Up", "Down", "Testing", "Unknown", "Dormant", "Not Present" or "Lower-Layer Down".
    static void PrintAdapterStatus(std::wofstream& ofs, TOLVA_OPER_STATUS enOperStatus);
    /// "Invalid", "Tentative", "Duplicate", "Deprecated" or "Preferred".
    static void PrintDadState(std::wofstream& ofs, NL_DAD_STATE enDadState);
    /// "Zone = Default, Level = Link", with the zone's number when it is not 0.
    static void PrintScopeId(std::wofstream& ofs, const SCOPE_ID& ScopeId);

    /// @}

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
