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

/// \file
/// The class TOLVA, which holds every operation of the library.

class AbstractNetworkAPI;

/// Discovers network adapters and reads and changes their configuration and the names of the machine.
///
/// All operations are static: no object is needed to call them. GetAdapterList() returns a record for each adapter.
/// Operations on an adapter take its record and look up its current state each time they are called.
///
/// \par Results
/// Operations return `true` on success and `false` on failure, unless their description says otherwise. The reason for
/// a failure is found only in \ref md_docs_trace "the trace", the text file TOLVA_trace.log. No exception leaves an
/// operation: anything unforeseen, such as lack of memory, is traced and reported as failure. A failed operation leaves
/// its `[out]` arguments unchanged unless its description says otherwise. Lists are appended to, never cleared. If
/// memory runs out, what has been appended remains.
///
/// \par Partial changes
/// An operation that changes several things stops, or goes on, as its description says when one of them fails. It never
/// rolls back what it has already changed.
///
/// \par Elevation
/// Reading does not require elevation. Operations that require it say so; without it the system refuses the change and
/// the operation fails.
///
/// \par Blocking
/// Operations run on the caller's thread; the library starts no threads. Unless its description says otherwise, an
/// operation only queries the system and returns within milliseconds. Writing a line of the trace can wait up to a
/// minute while other threads and processes write to the same file.
///
/// \anchor threads
/// \par Threads
/// Operations can be called from several threads at the same time, with one exception: before Vista, the operations of
/// the groups \ref routes, \ref addresses and \ref gateways that use the tables of routes and addresses, and
/// ReturnToDhcp(), allow one caller at a time, because the process shares one copy of each table.
/// Records and lists must not be shared between threads while one of them changes them. Two threads that change the
/// same adapter do no harm to the library, but the outcome depends on their order.
///
/// \anchor registry_keys
/// \par Registry keys
/// These names are used throughout. All keys are below `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet`:
/// - *IPv4 key*: `services\Tcpip\Parameters\Interfaces\<sNicGuid>`
/// - *IPv6 key*: `services\Tcpip6\Parameters\Interfaces\<sNicGuid>`
/// - *class key*: `Control\Class\{4D36E972-E325-11CE-BFC1-08002BE10318}\<sNicEnum>`
/// - *connection key*: `Control\Network\{4D36E972-E325-11CE-BFC1-08002BE10318}\<sNicGuid>\Connection`
/// .
/// Writing requires elevation and creates the key if it is missing. A value of an unexpected type counts as unreadable.
/// Operations that use the registry also unload an offline SYSTEM hive that the host product has mounted; see
/// \ref md_docs_boot_images "boot images".
///
/// \anchor failed_reads
/// \par Settings that cannot be read
/// The library does not tell a registry value that is missing from one that cannot be read, whatever the reason: access
/// is denied, the value has an unexpected type, or the registry fails. What follows depends only on the operation:
/// - Operations that need the value fail: IsDhcpEnabled(), GetAdapterIpconfigName(), and those that call them.
/// - Operations that know what the system does without the value succeed and answer that: IsGatewayAutomatic() and
///   IsDnsAutomatic() answer `true`, GetAutoconfigStatus() and GetNetBIOSOverTcpipStatus() answer `true`,
///   GetAdapterDomain() returns an empty text, and GetAdapterSpeed() the measured speed.
/// - GetAdapterList() leaves the fields of the record as they were and traces a warning.
/// - CanChangeAdapterOptions() skips the subkeys that it cannot read and succeeds.
/// .
/// Tables of IP Helper that cannot be read are a failure, except for GetAdaptersIpAddrs() before Vista. A caller that
/// has to tell the two cases apart reads the machine with `zelk_state_read()` of ZELK_STATE.DLL or with `zelkctl`:
/// there a setting that cannot be read is absent, never a default, and a problem says why.
///
/// \anchor commands
/// \par Commands
/// Changes for which the system offers no suitable function are made by its commands `netsh` and `ipconfig`, which run
/// in the command interpreter CMD. The operation blocks until the command ends; there is no time limit. It judges the
/// command by its exit code alone: 0 is success. When a command fails, what it printed is copied into the trace.
/// \par
/// The interpreter and the commands are searched for in the current directory first and then on the path, so the
/// current directory must be a trustworthy one. The connection name is put between quotation marks as it is. The
/// dialogs of the system do not allow a `"` in it; a name that has one anyway would end the quotation and change the
/// command.
///
/// \par Systems before Vista
/// The library runs on Windows 5.2 and later. Differences before Vista (6.0) are listed with each operation. They come
/// from the older functions of IP Helper, which know IPv4 only.
///
/// \par Loading and unloading
/// Loading the library moves the trace file of the previous load aside and starts Winsock. Do not load, unload or call
/// the library from the `DllMain` of another module. Unload it only while no operation is running.
class ZELK_NM_API TOLVA
{
public:
    /// The properties that GetModuleProperty() can read.
    enum TOLVA_GMP_CAT : unsigned int
    {
        TOLVA_GMP_DESCRIPTION = 1, ///< Name of the library, with the date and time of its build.
        TOLVA_GMP_VERSION = 2      ///< File version of the library.
    };

    /// Selects the address families that an operation reads or changes. The values are those of AF_UNSPEC, AF_INET and
    /// AF_INET6.
    enum FAMILY_TYPE : unsigned int
    {
        FAMILY_BOTH = 0, ///< IPv4 and IPv6.
        FAMILY_IPV4 = 2, ///< IPv4 only.
        FAMILY_IPV6 = 23 ///< IPv6 only.
    };

    /// Operational state of an adapter. The values are those of the platform's IF_OPER_STATUS.
    enum TOLVA_OPER_STATUS : unsigned int
    {
        OPER_STATUS_UP = 1,              ///< The adapter can send and receive packets.
        OPER_STATUS_DOWN = 2,            ///< The adapter cannot send or receive packets.
        OPER_STATUS_TESTING = 3,         ///< The adapter is in a test mode.
        OPER_STATUS_UNKNOWN = 4,         ///< The state is not known.
        OPER_STATUS_DORMANT = 5,         ///< The adapter is waiting for an external event.
        OPER_STATUS_NOT_PRESENT = 6,     ///< A component is missing, usually hardware.
        OPER_STATUS_LOWER_LAYER_DOWN = 7 ///< An interface below this one is down.
    };

    /// A network adapter, as GetAdapterList() describes it.
    ///
    /// The interface index is not part of the record because it can change while the machine runs; GetAdapterIndex()
    /// looks it up. Each operation names the fields that it needs. The order of the fields is part of the binary
    /// interface.
    struct NIC_INFO
    {
        velmor::string sNicDesc;         ///< Driver description.
        velmor::string sNicFriendlyName; ///< Connection name, from the adapter-address table.
        velmor::string sNicEnum;         ///< Name of the adapter's subkey of the network class, such as "0007".
        velmor::string sNicGuid;         ///< Adapter GUID, in braces.
        velmor::string sNicName;         ///< Device name: `\DEVICE\TCPIP_` followed by the GUID.
        velmor::string sNicPci;          ///< Plug and Play device instance path.
        velmor::string sNicType;         ///< "ETHERNET", "TOKENRING", "FDDI", "PPP", "LOOPBACK", "SLIP" or "OTHER".
        velmor::string sNicHwAddr;       ///< Hardware address, in the text form of HARDWARE_ADDRESS.
    };

    // An address in a record that nobody has filled is invalid, not 0.0.0.0: that would be a destination.

    /// A unicast address of an adapter.
    struct ASSOC_IP_ADDR
    {
        /// Whether the address was assigned automatically (by DHCP, by a router advertisement, from the link-layer
        /// address or at random) rather than by hand.
        bool bAutomatic = false;
        velmor::ip_address IpAddress{SOCKADDR_INET{}}; ///< The address, IPv4 or IPv6.
        /// Length of the on-link prefix in bits: 0 to 32 for IPv4, 0 to 128 for IPv6. Set it before passing an IPv4
        /// address to SetAdaptersIpAddrs(): the default, 0, stands for the mask 0.0.0.0.
        unsigned char SubnetPrefix = 0;
        unsigned long ulIndex = 0;                   ///< Interface index of the adapter that holds the address.
        NL_DAD_STATE enDadState = IpDadStateInvalid; ///< State of duplicate address detection; 0 before Vista.
        SCOPE_ID ScopeId = {};                       ///< Zone and scope level; 0 before Vista.
    };

    /// An entry of the routing table.
    struct ROUTE_INFO
    {
        unsigned long ulIndex = 0;                       ///< Interface index.
        velmor::ip_address Destination{SOCKADDR_INET{}}; ///< Destination network.
        unsigned char PrefixLength = 0; ///< Prefix length of the destination in bits; 0 for a default route.
        velmor::ip_address NextHop{SOCKADDR_INET{}}; ///< Gateway.
        unsigned long ulMetric = 0;                  ///< Route metric.
    };

    /// The constants of HARDWARE_ADDRESS, apart from it for the same reason as velmor::string_constants.
    struct HARDWARE_ADDRESS_CONSTANTS
    {
        /// Greatest number of bytes in an address.
        static constexpr unsigned int MAX_BYTES = 8;
    };

    /// A link-layer (MAC) address of up to 8 bytes. Constant objects can be read from several threads.
    class ZELK_NM_API HARDWARE_ADDRESS : public HARDWARE_ADDRESS_CONSTANTS
    {
    public:
        /// Creates an empty address, which has no bytes.
        HARDWARE_ADDRESS() noexcept;
        /// Creates an address from its bytes.
        /// \param[in] pByteArray  the bytes, in transmission order. A null pointer creates an empty address and writes
        ///                        an error to the trace.
        /// \param[in] count       number of bytes; those after the eighth are ignored. With 0 the address is empty, and
        ///                        an error is written to the trace.
        HARDWARE_ADDRESS(const unsigned char* pByteArray, unsigned int count) noexcept;
        /// Creates an address from text such as 00-1A-2B-3C-4D-5E.
        /// \param[in] sHwAddr  6 to 8 sections of at most two hexadecimal digits. Any other character separates two
        ///                     sections; a section without digits stands for a byte of 0. Any other text creates an
        ///                     empty address and writes an error to the trace.
        explicit HARDWARE_ADDRESS(const velmor::string& sHwAddr) noexcept;
        /// Copies an address.
        HARDWARE_ADDRESS(const HARDWARE_ADDRESS&) noexcept = default;
        /// Copies an address.
        HARDWARE_ADDRESS& operator=(const HARDWARE_ADDRESS&) noexcept = default;

        /// Copies the bytes of the address into a buffer and fills the rest of the buffer with zeros.
        /// \param[out] pByteArray  the buffer. With a null pointer nothing is copied, and an error is written to the
        ///                         trace.
        /// \param[in]  count       size of the buffer in bytes. A shorter buffer receives the first bytes. With 0
        ///                         nothing is copied, and an error is written to the trace.
        void copy(unsigned char* pByteArray, unsigned int count) const noexcept;
        /// Returns the number of bytes of the address, 0 to 8.
        [[nodiscard]] unsigned int size() const noexcept;

        /// Tells whether two addresses have the same bytes. Two empty addresses are equal.
        bool operator==(const HARDWARE_ADDRESS& other) const noexcept;
        /// Tells whether two addresses differ.
        bool operator!=(const HARDWARE_ADDRESS& other) const noexcept { return !(*this == other); }

        /// Returns the address as upper-case hexadecimal pairs joined by "-", such as 00-1A-2B-3C-4D-5E.
        /// \return the text, empty for an empty address.
        /// \throws std::bad_alloc when there is no memory for the text.
        operator velmor::string() const;

    private:
        /// Null on success, or the reason why the text is no hardware address.
        const char* Parse(const velmor::string& sHwAddr) noexcept;

        unsigned char m_bByteArray[MAX_BYTES];
        unsigned int m_uiByteCount;
    };

    /// The device interface class of NDIS LAN adapters, {AD498944-762F-11D0-8DCB-00C04FC3358C}.
    static const GUID NIC_DEVICECLASS_GUID;

    /// \defgroup lifecycle Objects, version and directories
    /// The TOLVA object, which applies trace settings; the version of modules; directories and temporary files.
    /// @{

    /// Applies the trace settings and starts the trace anew.
    ///
    /// Reads the trace level from trace.ini, empties the trace file and writes the version and description of the
    /// library into it. What has been traced before is lost, so construct one object at the start of the program, if
    /// any. The version is also recorded in Version.log, as GetResourceVersionStr() does. Throws nothing.
    TOLVA();
    /// Writes one line to the trace and does nothing else.
    ~TOLVA();
    /// Does nothing: the object has no data.
    TOLVA(const TOLVA&) = default;
    /// Does nothing: the object has no data.
    TOLVA& operator=(const TOLVA&);

    /// Reads a property of the library.
    ///
    /// \param[in]  cat    the property
    /// \param[out] value  TOLVA_GMP_DESCRIPTION: the library's name with the date and time of its build.
    ///                    TOLVA_GMP_VERSION: the file version of ZELK_NM.DLL as GetResourceVersionStr() gives it, or
    ///                    "Error".
    /// \return 0 on success; 1 for any other category, and when there is no memory, with `value` unchanged.
    static unsigned int GetModuleProperty(TOLVA_GMP_CAT cat, velmor::string& value);

    /// Reads the "FileVersion" from the version resource of a loaded module.
    ///
    /// The version is also recorded in Version.log in the product's log directory (GetLogDir()), in section
    /// `sDllName`, key "Version", if that directory exists.
    ///
    /// \param[in]  sDllName  name or path of a module that is loaded in this process. For an empty name `sVersion` is
    ///                       left unchanged.
    /// \param[out] sVersion  the version, such as "1.0.0.0", or "Error" when it cannot be read
    static void GetResourceVersionStr(const velmor::string& sDllName, velmor::string& sVersion);

    /// Finds the directory of the executable of this process. Writes no trace.
    ///
    /// \param[out] sDir  the directory, without a backslash at the end
    /// \return `false` if the system does not return the path of the executable.
    static bool GetOwnDir(velmor::string& sDir);

    /// Finds the product's log directory, where Version.log is kept. Writes no trace.
    ///
    /// The directory is the one that `zlk.ini` beside the executable names in section "File Locations", key "Log
    /// Files", or `X:\Program Files\Velmor\ZELK\Logfiles`. It need not exist. The trace file is kept elsewhere; see
    /// \ref md_docs_trace "the trace".
    ///
    /// \param[out] sDir  the directory
    /// \return `false` if GetOwnDir() fails.
    static bool GetLogDir(velmor::string& sDir);

    /// Creates an empty file with a unique name in the user's directory for temporary files.
    ///
    /// Creates that directory if it is missing. The caller owns the file and must delete it.
    ///
    /// \param[out] sFilename  full path of the new file
    /// \return `false` if the file cannot be created.
    static bool GetTempFilename(velmor::string& sFilename);

    /// @}
    /// \defgroup conversions Address conversions
    /// Conversions between addresses, masks, prefix lengths and the socket structures of the platform.
    ///
    /// 32-bit addresses and masks are in host byte order: 192.168.1.10 is 0xC0A8010A. Prefix lengths are in bits. These
    /// operations do not query the system; apart from the trace they have no effect.
    /// @{

    /// Converts an IPv4 address to a number.
    /// \param[in] ip  the address
    /// \return the number; 0xFFFFFFFF for an IPv6 or invalid address.
    static unsigned long ConvertIpAddressToDword(velmor::ip_address ip);
    /// Converts a number to an IPv4 address.
    /// \param[in] dwIp  the number
    /// \return the address.
    static velmor::ip_address ConvertDwordToIpAddress(unsigned long dwIp);
    /// Converts an IPv4 mask to a prefix length.
    /// \param[in] dwNetmask  the mask. It is not checked for holes.
    /// \return 32 minus the number of trailing zero bits; 0 for the mask 0.
    static unsigned char ConvertDwordToPrefix(unsigned long dwNetmask);
    /// Converts a prefix length to an IPv4 mask.
    /// \param[in] prefix  the prefix length, 0 to 32
    /// \return the mask; 0 for a prefix length above 32.
    static unsigned long ConvertPrefixToDword(unsigned char prefix);
    /// Converts an IPv4 mask, given as an address, to a prefix length.
    /// \param[in] netmask  the mask. It is not checked for holes.
    /// \return 32 minus the number of trailing zero bits; 0 for 0.0.0.0; 32 for an IPv6 or invalid address.
    static unsigned char ConvertNetmaskToPrefix(const velmor::ip_address& netmask);
    /// Converts a prefix length to an IPv4 mask, given as an address.
    /// \param[in] prefix  the prefix length, 0 to 32
    /// \return the mask; 0.0.0.0 for a prefix length above 32.
    static velmor::ip_address ConvertPrefixToNetmask(unsigned char prefix);
    /// Converts a socket address to an address.
    /// \param[in] sa  the socket address. `lpSockaddr` is null or points to a complete structure of its family; the
    ///                length is not read.
    /// \return the address; IPv4 0.0.0.0 for a null pointer and for families other than AF_INET and AF_INET6.
    static velmor::ip_address Convert_SOCKET_ADDRESS(const SOCKET_ADDRESS& sa);
    /// Converts a socket address of either family to an address.
    /// \param[in] sa  the socket address
    /// \return the address; IPv4 0.0.0.0 for families other than AF_INET and AF_INET6.
    static velmor::ip_address Convert_SOCKADDR_INET(const SOCKADDR_INET& sa);
    /// Converts an address to a socket address.
    /// \param[in] ip  the address
    /// \return the socket address; all zeros (AF_UNSPEC) for an invalid address.
    static SOCKADDR_INET Convert_SOCKADDR_INET(const velmor::ip_address& ip);

    /// @}
    /// \defgroup discovery Discovery
    /// Lists the adapters and finds the names by which the system knows them. These operations change nothing.
    /// @{

    /// Lists the adapters that are enabled for IPv4.
    ///
    /// Appends a record for each adapter in the order of the platform's interface table, then completes every record of
    /// the list, including those that were there before the call. For each record:
    /// 1. `sNicEnum` is the subkey of the network class whose "NetCfgInstanceId" is the GUID; `sNicDesc` is its
    ///    "DriverDesc".
    /// 2. `sNicFriendlyName` comes from the adapter-address table.
    /// 3. `sNicPci` is "DeviceInstanceID" of the \ref registry_keys "class key" or, if that cannot be read,
    ///    "PnpInstanceID" of the connection key.
    /// 4. `sNicType` and then `sNicHwAddr` come from the adapter-address table.
    /// .
    /// If a step fails, a warning is traced, and the fields of this step and of the later ones stay as they were, which
    /// is empty in a new record. Step 2 is the exception: without it the later steps are still taken. Fields that the
    /// system has but leaves empty, and a missing "DriverDesc", are not traced as warnings.
    ///
    /// \param[in,out] NicList  the list
    /// \return `true` if the interface table could be read; records can be incomplete.
    ///
    /// \par Failure
    /// Fails if the interface table cannot be read or if no adapter is enabled for IPv4: the list is then unchanged. It
    /// also fails if a device name contains no GUID in braces: the other adapters are then appended, but no record is
    /// completed.
    static bool GetAdapterList(std::vector<NIC_INFO>& NicList);

    /// Looks up the current interface index of an adapter.
    ///
    /// \param[in]  NicInfo  the adapter; requires `sNicGuid`
    /// \param[out] ulIndex  the index. After a failure its value is undefined.
    /// \return `false` if `sNicGuid` is empty or the system knows no such adapter.
    static bool GetAdapterIndex(const NIC_INFO& NicInfo, unsigned long& ulIndex);

    /// Reads the connection name, by which netsh and ipconfig know the adapter.
    ///
    /// \param[in]  NicInfo        the adapter; requires `sNicGuid`
    /// \param[out] sIpconfigName  "Name" of the \ref registry_keys "connection key"
    /// \return `false` if `sNicGuid` is empty or "Name" cannot be read. An empty name is a success.
    static bool GetAdapterIpconfigName(const NIC_INFO& NicInfo, velmor::string& sIpconfigName);

    /// @}
    /// \defgroup address_table Adapter state
    /// What the adapter-address table of the system says about an adapter: state, families, hardware address, DHCP and
    /// DNS servers.
    ///
    /// Each operation reads the table anew (GetAdaptersAddresses) and changes nothing. All require `sNicGuid`. They
    /// fail if it is empty, if the adapter has no interface index (GetAdapterIndex()), if the table cannot be read, and
    /// if the adapter is not in it.
    /// @{

    /// Reads the operational state of an adapter.
    ///
    /// \param[in]  NicInfo       the adapter; requires `sNicGuid`
    /// \param[out] enOperStatus  the state
    /// \return `false` if the adapter is not found or its state has none of the documented values.
    /// \see PrintAdapterStatus()
    static bool GetAdapterOperStatus(const NIC_INFO& NicInfo, TOLVA_OPER_STATUS& enOperStatus);
    /// Reads which address families are bound to an adapter.
    ///
    /// \param[in]  NicInfo       the adapter; requires `sNicGuid`
    /// \param[out] enFamilyType  FAMILY_BOTH or FAMILY_IPV4. FAMILY_IPV6 is possible only if the adapter's IPv4
    ///                           interface index is 0.
    /// \return `false` if the adapter is not found or neither family is bound to it.
    static bool AddressFamilySupported(const NIC_INFO& NicInfo, FAMILY_TYPE& enFamilyType);
    /// Reads the hardware address of an adapter.
    ///
    /// \param[in]  NicInfo  the adapter; requires `sNicGuid`
    /// \param[out] HwAddr   the address; empty if the adapter has none, such as a loopback adapter
    /// \return `false` if the adapter is not found.
    /// \see SetHardwareAddress()
    static bool GetHardwareAddress(const NIC_INFO& NicInfo, HARDWARE_ADDRESS& HwAddr);
    /// Reads the DHCP server from which an adapter has its IPv4 lease.
    ///
    /// \param[in]  NicInfo     the adapter; requires `sNicGuid`
    /// \param[out] DhcpServer  the server; IPv4 0.0.0.0 if there is none, and before Vista
    /// \return `false` if the adapter is not found.
    /// \see IsDhcpEnabled()
    static bool GetDhcpServer(const NIC_INFO& NicInfo, velmor::ip_address& DhcpServer);
    /// Reads the identity of an adapter's DHCPv6 client. The address of the server is not returned.
    ///
    /// \param[in]  NicInfo  the adapter; requires `sNicGuid`
    /// \param[out] ulIAID   identifier of the identity association; 0 if there is none, and before Vista
    /// \param[out] sDUID    DHCP unique identifier (DUID) of the client as upper-case hexadecimal pairs joined by "-";
    ///                      empty if there is none, and before Vista
    /// \return `false` if the adapter is not found.
    static bool GetDhcpServer(const NIC_INFO& NicInfo, unsigned long& ulIAID, velmor::string& sDUID);
    /// Lists the DNS servers that an adapter uses, of both families, in their order of preference.
    ///
    /// \param[in]     NicInfo        the adapter; requires `sNicGuid`
    /// \param[in,out] DnsServerList  the list to which the servers are appended
    ///                               A server whose address Winsock cannot convert is left out.
    /// \return `false` if the adapter is not found.
    /// \see SetDnsServerList()
    static bool GetDnsServerList(const NIC_INFO& NicInfo, std::vector<velmor::ip_address>& DnsServerList);

    /// @}
    /// \defgroup device Device control
    /// Starts and stops the device of an adapter, sets its hardware address and shows its property sheet.
    ///
    /// A device that stops cuts off every connection over the adapter. The device is found by `sNicPci`, its Plug and
    /// Play device instance path.
    /// @{

    /// Tells whether the driver exposes the NDIS LAN device interface.
    ///
    /// Searches the subkeys of `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\DeviceClasses\`
    /// `{AD498944-762F-11D0-8DCB-00C04FC3358C}` for one whose "DeviceInstance" is `sNicPci`, ignoring case. Subkeys
    /// that cannot be read are skipped.
    ///
    /// \param[in]  NicInfo            the adapter; requires `sNicPci`
    /// \param[out] bCanChangeOptions  whether there is such a subkey; `false` after a failure
    /// \return `false` if `sNicPci` is empty or the subkeys cannot be enumerated.
    static bool CanChangeAdapterOptions(const NIC_INFO& NicInfo, bool& bCanChangeOptions);

    /// Starts the device of an adapter. It stays enabled when the system restarts.
    ///
    /// \param[in] NicInfo  the adapter; requires `sNicPci`
    /// \return `false` if `sNicPci` is empty, the device is not found, or the device installer refuses the change.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Blocking
    /// Until the device installer has started the device, which can take several seconds.
    static bool EnableAdapter(const NIC_INFO& NicInfo);
    /// Stops the device of an adapter. It stays disabled when the system restarts.
    ///
    /// \param[in] NicInfo  the adapter; requires `sNicPci`
    /// \return `false` if `sNicPci` is empty, the device is not found, or the device installer refuses the change.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Blocking
    /// Until the device installer has stopped the device, which can take several seconds.
    static bool DisableAdapter(const NIC_INFO& NicInfo);
    /// Changes the state of one device of a device information set, in all hardware profiles.
    ///
    /// \param[in] ulNewState     the new state: 1 (DICS_ENABLE) or 2 (DICS_DISABLE). It is passed on unchecked.
    /// \param[in] ulMemberIndex  position of the device in the set, counted from 0
    /// \param[in] hDevInfo       the set, from SetupDiGetClassDevs. It remains the caller's.
    /// \return `false` if there is no such device or the device installer refuses the change.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Blocking
    /// Until the device installer has changed the state, which can take several seconds.
    static bool AdapterStateChange(unsigned long ulNewState, unsigned long ulMemberIndex, HDEVINFO hDevInfo);
    /// Sets the hardware address that the driver is to use, and restarts the device.
    ///
    /// Writes the address, such as 02-1A-2B-3C-4D-5E, as "NetworkAddress" of the \ref registry_keys "class key", then
    /// calls DisableAdapter() and EnableAdapter(). The setting lasts. It takes effect if the driver reads it when its
    /// device starts; verify the result with GetHardwareAddress().
    ///
    /// \param[in] NicInfo  the adapter; requires `sNicEnum` and `sNicPci`
    /// \param[in] HwAddr   the address. An empty address is written as empty text.
    /// \return `true` if the value was written and the device restarted.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Failure
    /// Nothing is changed if a required field is empty or the value cannot be written. If the device cannot be stopped
    /// the value stays written, and the device keeps running. If it cannot be started again it stays stopped.
    /// \par Blocking
    /// Until the device has been stopped and started, which can take several seconds.
    static bool SetHardwareAddress(const NIC_INFO& NicInfo, const HARDWARE_ADDRESS& HwAddr);
    /// Shows the system's property sheet of a device.
    ///
    /// \param[in] NicInfo  the adapter; requires `sNicPci`
    /// \return `false` if `sNicPci` is empty. It is not a failure if the system has no property sheet
    ///         (DeviceProperties_RunDLL in DEVMGR.DLL), such as in a boot image: the operation then does nothing.
    ///
    /// \par Requires
    /// Elevation, for the user to change settings.
    /// \par Blocking
    /// Until the user closes the property sheet.
    static bool ChangeAdapterOptions(const NIC_INFO& NicInfo);

    /// @}
    /// \defgroup tcp6 TCP connections over IPv6
    /// The machine's table of TCP connections over IPv6.
    /// @{

    /// Reads the table of TCP connections over IPv6, as the platform's GetTcp6Table does.
    ///
    /// \param[out]    pTcpTable  buffer for the table
    /// \param[in,out] ulSize     size of the buffer in bytes; on return, the size needed
    /// \param[in]     bSort      whether to sort the table
    /// \return a Windows error code instead of `true` or `false`: 0 on success; 122 (ERROR_INSUFFICIENT_BUFFER) if the
    ///         buffer is too small; 1 (ERROR_INVALID_FUNCTION) if the system has no such table, as before Vista; or
    ///         another code of the platform.
    static unsigned long GetTcp6Table(MIB_TCP6TABLE* pTcpTable, unsigned long& ulSize, bool bSort);

    /// @}
    /// \defgroup routes Routes
    /// Reads and adds routes of an adapter.
    ///
    /// For default routes, see the group \ref gateways.
    /// @{

    /// Lists the routes of an adapter.
    ///
    /// \param[in]     NicInfo  the adapter; requires `sNicGuid`
    /// \param[in,out] Routes   the list to which the routes are appended
    /// \return `false` if `sNicGuid` is empty, the adapter has no interface index (GetAdapterIndex()), or the routing
    ///         table cannot be read.
    ///
    /// \par Before Vista
    /// Lists IPv4 routes only, from a copy of the table that the first call in the process has made: later changes are
    /// not seen. One caller at a time.
    static bool GetAdapterRoutes(const NIC_INFO& NicInfo, std::vector<ROUTE_INFO>& Routes);
    /// Adds a route to the routing table, where it stays until the system restarts.
    ///
    /// If the system refuses the metric as too low (error 160), the metric is raised by 1 and the route is tried again.
    /// The number of attempts is not limited: the operation does not return while the system gives this answer,
    /// whatever its cause. A route that exists already is a success, unless its metric had to be raised.
    ///
    /// \param[in] NicInfo  requires `sNicGuid`, but is otherwise not used
    /// \param[in] Route    the route, through the interface `ulIndex`, which can be that of another adapter. Fill in
    ///                     all fields: they are not checked before they are passed to the system.
    /// \return `false` if `sNicGuid` is empty, there is no such interface, or the system refuses the route.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Before Vista
    /// Fails for an IPv6 route, and for a route that exists already if the system reports it. An address that has not
    /// been filled in is passed to the system as 255.255.255.255, a prefix length above 32 as the mask 0.0.0.0.
    static bool AddAdapterRoute(const NIC_INFO& NicInfo, const ROUTE_INFO& Route);

    /// @}
    /// \defgroup addresses Addresses
    /// Reads the addresses of an adapter and replaces them with static ones.
    ///
    /// ReturnToDhcp() returns an adapter to addresses that DHCP assigns.
    /// @{

    /// Lists the unicast addresses of an adapter.
    ///
    /// \param[in]     NicInfo  the adapter; requires `sNicGuid`
    /// \param[in,out] IpAddrs  the list to which the addresses are appended
    /// \return `false` if `sNicGuid` is empty, the adapter has no interface index (GetAdapterIndex()), or the address
    ///         table cannot be read.
    ///
    /// \par Before Vista
    /// Lists IPv4 addresses only, from a copy of the table that the first call in the process has made: later changes
    /// are not seen. An adapter without an index and an unreadable table are a success without addresses. One caller at
    /// a time.
    static bool GetAdaptersIpAddrs(const NIC_INFO& NicInfo, std::vector<ASSOC_IP_ADDR>& IpAddrs);

    /// Replaces the addresses of an adapter with static ones.
    ///
    /// For every family of which the list has an address:
    /// 1. If DHCP is enabled for all these families (IsDhcpEnabled()), the leases are released (ReleaseDhcp()). A
    ///    failure of this step does not stop the operation.
    /// 2. All current addresses of these families are removed, whatever their origin.
    /// 3. The addresses of the list are added in their order.
    /// .
    /// Addresses of the other family stay.
    ///
    /// \param[in] NicInfo  the adapter; requires `sNicGuid`, and `sNicName` for releasing leases
    /// \param[in] IpAddrs  the addresses. Only `IpAddress` and, for IPv4, `SubnetPrefix` are read.
    /// \return `true` if all current addresses of these families were removed and all addresses of the list were added.
    ///
    /// \par Requires
    /// Elevation. From Vista on, a connection name (GetAdapterIpconfigName()).
    /// \par Changes
    /// From Vista on, step 2 runs the \ref commands "commands" `netsh interface ipv4 delete address` and
    /// `netsh interface ipv6 delete address ... persistent`; step 3 runs
    /// `netsh interface ipv4 set address ... static` with address and mask and
    /// `netsh interface ipv6 set address ... unicast infinite infinite persistent`. The settings last.
    /// - The command for IPv4 replaces all IPv4 addresses. Of several, the last one remains.
    /// - The command for IPv4 names no gateway, so the adapter can lose its IPv4 default route. Set it again with
    /// SetDefaultGateway().
    /// - The prefix length of an IPv6 address is not passed on.
    /// \par Failure
    /// A list without a valid address fails, and so does an empty `sNicGuid`; nothing is changed. If the current
    /// addresses cannot be read, leases may have been released. If an address cannot be removed, the others are still
    /// removed, and none is added. If an address of the list cannot be added, which includes an invalid one, the others
    /// are still added. Removed addresses are not restored.
    /// \par Blocking
    /// Until a command has run for each address that is removed or added, and for each lease.
    /// \par Before Vista
    /// IPv4 addresses are changed by the functions DeleteIPAddress and SetAdapterIpAddress of IP Helper, without a
    /// gateway. IPv6 addresses are skipped, which is a success; an invalid address is passed to the system as
    /// 255.255.255.255. The current addresses are those of GetAdaptersIpAddrs(), with its limits; one that no longer
    /// exists counts as removed. The first call looks for SetAdapterIpAddress; if it is not found then, no IPv4 address
    /// can be added until the library is loaded again. One caller at a time.
    static bool SetAdaptersIpAddrs(const NIC_INFO& NicInfo, const std::vector<ASSOC_IP_ADDR>& IpAddrs);

    /// @}
    /// \defgroup dhcp DHCP
    /// Reads whether an adapter is a DHCP client, makes it one, and renews and releases leases.
    ///
    /// SetAdaptersIpAddrs() sets static addresses; GetDhcpServer() reads the server of a lease.
    /// @{

    /// Tells whether an adapter is configured as a DHCP client.
    ///
    /// \param[in]  NicInfo       the adapter; requires `sNicGuid`
    /// \param[in]  enFamilyType  the family
    /// \param[out] bDhcpEnabled  FAMILY_IPV4: whether "EnableDHCP" of the \ref registry_keys "IPv4 key" is 1.
    ///                           FAMILY_IPV6: whether "Dhcpv6State" of the IPv6 key is not 0. FAMILY_BOTH: whether both
    ///                           are true.
    /// \return `false` if `sNicGuid` is empty, the family is unknown, or a value that is asked for cannot be read.
    static bool IsDhcpEnabled(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bDhcpEnabled);
    /// Renews the DHCP lease of an adapter.
    ///
    /// Runs the \ref commands "command" `ipconfig /renew` or `ipconfig /renew6` for the connection. For FAMILY_BOTH
    /// both run, IPv4 first; if that fails, the one for IPv6 does not run.
    ///
    /// \param[in] NicInfo       the adapter; requires `sNicGuid`
    /// \param[in] enFamilyType  the family
    /// \return `false` if `sNicGuid` is empty, the family is unknown, the connection name cannot be read
    ///         (GetAdapterIpconfigName()), or a command fails, such as for an adapter that is not a DHCP client.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Blocking
    /// Until the command ends. If no DHCP server answers, that can take a minute or more for each family.
    static bool RenewDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);
    /// Releases the DHCP lease of an adapter.
    ///
    /// Runs the \ref commands "command" `ipconfig /release` or `ipconfig /release6` for the connection. For FAMILY_BOTH
    /// both run, IPv4 first; if that fails, the one for IPv6 does not run.
    ///
    /// \param[in] NicInfo       the adapter; requires `sNicName`, and `sNicGuid` for finding the connection name
    /// \param[in] enFamilyType  the family
    /// \return `false` if a required field is empty, the family is unknown, the connection name cannot be read
    ///         (GetAdapterIpconfigName()), or a command fails.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Blocking
    /// Until the command ends.
    static bool ReleaseDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);
    /// Makes an adapter with static addresses a DHCP client again.
    ///
    /// If IsDhcpEnabled() says that it is one already, the operation succeeds and changes nothing. Otherwise:
    /// 1. The addresses of the family are removed as by SetAdaptersIpAddrs(). One that cannot be removed does not stop
    ///    the operation.
    /// 2. "EnableDHCP" of the \ref registry_keys "IPv4 key" is set to 1. For FAMILY_IPV6 nothing is written.
    /// 3. The device is stopped and, half a second later, started (DisableAdapter(), EnableAdapter()). A failure of
    ///    this step does not stop the operation.
    /// 4. The lease is renewed (RenewDhcp()).
    /// .
    /// Static gateways and DNS servers stay; see ReturnGatewayToDhcp() and ReturnDnsToDhcp().
    ///
    /// \param[in] NicInfo       the adapter; requires `sNicGuid`, and `sNicPci` for restarting the device
    /// \param[in] enFamilyType  the family. With FAMILY_BOTH the adapter counts as a DHCP client only if it is one for
    ///                          both families; otherwise the addresses of both are removed.
    /// \return `true` if the adapter is a DHCP client already or the lease was renewed.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Failure
    /// Nothing is changed if `sNicGuid` is empty, the family is unknown, IsDhcpEnabled() fails or the addresses cannot
    /// be read. If "EnableDHCP" cannot be written the addresses have been removed. If the lease cannot be renewed all
    /// other changes stay.
    /// \par Blocking
    /// Until the commands have run and the device has restarted; a renewal can take a minute or more for each family.
    /// \par Before Vista
    /// The addresses are those of GetAdaptersIpAddrs(), with its limits. One caller at a time.
    static bool ReturnToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// @}
    /// \defgroup gateways Default gateways
    /// Reads and sets the default gateways of an adapter.
    ///
    /// For all routes, see the group \ref routes.
    /// @{

    /// Lists the default gateways of an adapter: the next hops of its routes with prefix length 0.
    ///
    /// \param[in]     NicInfo       the adapter; requires `sNicGuid`
    /// \param[in]     enFamilyType  a valid family. It does not filter: gateways of both families are returned.
    /// \param[in,out] Gateways      the list to which the gateways are appended
    /// \return `false` if `sNicGuid` is empty, the family is unknown, the adapter has no interface index, or
    ///         GetAdapterRoutes() fails.
    ///
    /// \par Before Vista
    /// The routes are those of GetAdapterRoutes(), with its limits. One caller at a time.
    static bool GetDefaultGatewayList(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType,
                                      std::vector<velmor::ip_address>& Gateways);
    /// Replaces the default gateways of an adapter with one.
    ///
    /// 1. All default routes of the adapter and the gateway's family are deleted.
    /// 2. A default route through the gateway is added, with the metric of the first deleted route, or 0 if there was
    ///    none. If the system refuses the metric as too low, it is raised as by AddAdapterRoute().
    /// 3. The gateway is written as the only entry of "DefaultGateway" of the IPv4 or IPv6
    ///    \ref registry_keys "key".
    /// .
    /// The route stays until the system restarts, the registry value lasts.
    ///
    /// \param[in] NicInfo  the adapter; requires `sNicGuid`
    /// \param[in] Gateway  the gateway
    /// \return `true` if the route was added and the value written.
    ///
    /// \par Requires
    /// Elevation.
    /// \par Failure
    /// Nothing is changed if `sNicGuid` is empty, the gateway is invalid, the adapter has no interface index, or the
    /// routing table cannot be read. If a route cannot be deleted, the others are still deleted, and none is added. If
    /// the new route cannot be added, the adapter has no default route of that family. If the value cannot be written,
    /// the new route stays.
    /// \par Before Vista
    /// - Give IPv4 gateways only. An IPv6 gateway is not refused: it costs the adapter its IPv4 default route.
    /// - Routes to the destination 0.0.0.0 count as default routes, whatever their mask. The metric is that of the last
    ///   deleted one. The first route that cannot be deleted ends the operation.
    /// - The routes to delete are taken from a copy of the table that the first call in the process has made. A second
    ///   change of the same adapter in one process therefore fails if the system no longer has a route of that copy.
    /// - One caller at a time.
    static bool SetDefaultGateway(const NIC_INFO& NicInfo, const velmor::ip_address& Gateway);
    /// Tells whether an adapter has no static gateway in the registry.
    ///
    /// \param[in]  NicInfo       the adapter; requires `sNicGuid`
    /// \param[in]  enFamilyType  the family
    /// \param[out] bIsAutomatic  whether "DefaultGateway" of the IPv4 or IPv6 \ref registry_keys "key" is empty or
    ///                           cannot be read, for any reason. FAMILY_BOTH: whether this is so for both. An IPv6
    ///                           gateway that SetDefaultGateway() has written cannot be read here, and so counts as
    ///                           automatic.
    /// \return `false` if `sNicGuid` is empty or the family is unknown. An unreadable value is not a failure.
    static bool IsGatewayAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic);
    /// Deletes the static gateways of an adapter from the registry. Routes stay as they are.
    ///
    /// \param[in] NicInfo       the adapter; requires `sNicGuid`
    /// \param[in] enFamilyType  the family. "DefaultGateway" of the IPv4 \ref registry_keys "key" is emptied for every
    ///                          family, also for FAMILY_IPV6; that of the IPv6 key for FAMILY_IPV6 and FAMILY_BOTH.
    /// \return `false` if `sNicGuid` is empty, the family is unknown, or a value cannot be written. If that is the one
    ///         of the IPv6 key, the one of the IPv4 key has been emptied.
    ///
    /// \par Requires
    /// Elevation.
    static bool ReturnGatewayToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// @}
    /// \defgroup dns DNS servers
    /// Sets the static DNS servers of an adapter, or deletes them.
    ///
    /// GetDnsServerList() lists the servers in use.
    /// @{

    /// Replaces the static DNS servers of an adapter.
    ///
    /// 1. The servers are written, joined by commas, as "NameServer": IPv4 servers into the IPv4
    ///    \ref registry_keys "key", IPv6 servers into the IPv6 key. A family without servers receives empty text.
    /// 2. The first server of the list takes effect at once: the \ref commands "command"
    ///    `netsh interface ipv4 set dnsservers ... static` (or `ipv6`) makes it the only server of its family.
    ///
    /// \param[in] NicInfo        the adapter; requires `sNicGuid`
    /// \param[in] DnsServerList  the servers in their order of preference. Invalid addresses are left out, but the
    ///                           first one must be valid. An empty list is a success and changes nothing; to clear the
    ///                           servers call ReturnDnsToDhcp().
    /// \return `true` if both values were written and the command succeeded.
    ///
    /// \par Requires
    /// Elevation, and a connection name (GetAdapterIpconfigName()).
    /// \par Changes
    /// The settings last. Further servers are only written into the registry: they are not in use when the operation
    /// ends, and the command itself may store the first server as the only one of its family.
    /// \par Failure
    /// Nothing is changed if `sNicGuid` is empty or the IPv4 key cannot be written. If the IPv6 key cannot be written,
    /// the value of the IPv4 key stays. If the first address is invalid, the connection name cannot be read, or the
    /// command fails, both values stay.
    /// \par Blocking
    /// Until the command ends.
    static bool SetDnsServerList(const NIC_INFO& NicInfo, const std::vector<velmor::ip_address>& DnsServerList);
    /// Tells whether an adapter has no static DNS servers.
    ///
    /// \param[in]  NicInfo       the adapter; requires `sNicGuid`
    /// \param[in]  enFamilyType  the family
    /// \param[out] bIsAutomatic  whether "NameServer" of the IPv4 or IPv6 \ref registry_keys "key" is empty or cannot
    ///                           be read, for any reason. FAMILY_BOTH: whether this is so for both. For an unknown
    ///                           family the answer is `false`.
    /// \return `false` if `sNicGuid` is empty. Neither an unreadable value nor an unknown family is a failure.
    static bool IsDnsAutomatic(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType, bool& bIsAutomatic);
    /// Deletes the static DNS servers of an adapter from the registry.
    ///
    /// Empties "NameServer" of the IPv4 \ref registry_keys "key", of the IPv6 key, or of both. No command runs: servers
    /// that are in use stay in use until the system configures the adapter again, such as when its device restarts.
    ///
    /// \param[in] NicInfo       the adapter; requires `sNicGuid`
    /// \param[in] enFamilyType  the family
    /// \return `false` if `sNicGuid` is empty, the family is unknown, or a value cannot be written. If that is the one
    ///         of the IPv6 key, the one of the IPv4 key has been emptied if it was asked for.
    ///
    /// \par Requires
    /// Elevation.
    static bool ReturnDnsToDhcp(const NIC_INFO& NicInfo, FAMILY_TYPE enFamilyType);

    /// @}
    /// \defgroup properties Adapter settings
    /// Reads the speed and further settings of an adapter. These operations change nothing.
    ///
    /// A setting that cannot be read, for any reason, counts as missing: the operation then succeeds with the default
    /// that it names.
    /// @{

    /// Reads the speed and duplex setting of an adapter as its driver words it, or else the measured speed.
    ///
    /// Drivers keep the setting under different names. Of thirty known ones, such as "*SpeedDuplex", the first that can
    /// be read in the \ref registry_keys "class key" counts. Its text comes from `Ndi\params\<name>\Enum` or
    /// `Ndi\savedParams\<name>\Enum` below that key.
    ///
    /// \param[in]  NicInfo        the adapter; requires `sNicGuid` and `sNicEnum`
    /// \param[out] sAdapterSpeed  the driver's text. For a driver without a setting: the measured speed
    ///                            (GetAdapterLinkSpeed()), such as "100.0 Mbps", or "Unknown".
    /// \return `false` if a required field is empty, or the driver has a setting but no text for its value.
    static bool GetAdapterSpeed(const NIC_INFO& NicInfo, velmor::string& sAdapterSpeed);
    /// Reads the measured speed of an adapter.
    ///
    /// \param[in]  NicInfo  the adapter; requires `sNicGuid`
    /// \param[out] dSpeed   the speed in megabits (1,000,000 bits) per second, from GetIfEntry. The platform's 32-bit
    ///                      number of bits per second limits it to 4294.967295.
    /// \return `false` if `sNicGuid` is empty, the adapter has no interface index (GetAdapterIndex()), or the platform
    ///         reports an error.
    static bool GetAdapterLinkSpeed(const NIC_INFO& NicInfo, double& dSpeed);
    /// Reads the connection-specific DNS domain of an adapter.
    ///
    /// \param[in]  NicInfo  the adapter; requires `sNicGuid`
    /// \param[out] sDomain  "Domain" of the \ref registry_keys "IPv4 key"; empty if it cannot be read
    /// \return `false` if `sNicGuid` is empty. An unreadable value is not a failure.
    static bool GetAdapterDomain(const NIC_INFO& NicInfo, velmor::string& sDomain);
    /// Tells whether IPv4 assigns itself an address when no DHCP server answers.
    ///
    /// \param[in]  NicInfo        the adapter; requires `sNicGuid`
    /// \param[out] bIsAutoConfig  whether "IPAutoconfigurationEnabled" of the \ref registry_keys "IPv4 key" is 1;
    ///                            `true` if it cannot be read
    /// \return `false` if `sNicGuid` is empty. An unreadable value is not a failure.
    static bool GetAutoconfigStatus(const NIC_INFO& NicInfo, bool& bIsAutoConfig);
    /// Tells whether NetBIOS over TCP/IP is enabled.
    ///
    /// The setting is "NetbiosOptions" of
    /// `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\services\NetBT\Parameters\Interfaces\Tcpip_<sNicGuid>` or, if that
    /// is 0 or cannot be read, "DHCPNetbiosOptions" of the same key.
    ///
    /// \param[in]  NicInfo               the adapter; requires `sNicGuid`
    /// \param[out] bUseNetBIOSOverTcpip  whether the setting is 1; `true` if neither value can be read
    /// \return `false` if `sNicGuid` is empty. An unreadable value is not a failure.
    static bool GetNetBIOSOverTcpipStatus(const NIC_INFO& NicInfo, bool& bUseNetBIOSOverTcpip);

    /// @}
    /// \defgroup identity Machine identity
    /// Reads and sets the names of the machine: computer name, primary DNS suffix and workgroup.
    /// @{

    /// Reads the DNS host name of the machine, without a suffix.
    ///
    /// \param[out] sComputerName  the name
    /// \return `false` if the system does not return it.
    static bool GetComputerNameW(velmor::string& sComputerName);
    /// Reads the primary DNS suffix of the machine.
    ///
    /// \param[out] sPrimaryDnsSuffix  the suffix; empty if there is none
    /// \return `false` if the system does not return it.
    static bool GetPrimaryDnsSuffix(velmor::string& sPrimaryDnsSuffix);
    /// Reads the fully qualified DNS name of the machine: host name and primary DNS suffix, joined by a dot.
    ///
    /// \param[out] sFullComputerName  the name
    /// \return `false` if the system does not return it.
    static bool GetFullComputerName(velmor::string& sFullComputerName);
    /// Sets the DNS host name of the machine, which the system adopts when it restarts.
    ///
    /// Writes "Hostname" and "NV Hostname" of
    /// `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\services\Tcpip\Parameters`. The NetBIOS name is not changed.
    ///
    /// \param[in] sComputerName  the name. It is not checked.
    /// \return `false` if a value cannot be written. If that is the second one, the first one stays changed.
    ///
    /// \par Requires
    /// Elevation.
    static bool SetComputerNameW(const velmor::string& sComputerName);
    /// Sets the primary DNS suffix of the machine, which the system adopts when it restarts.
    ///
    /// Writes "Domain" and "NV Domain" of `HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\services\Tcpip\Parameters`.
    ///
    /// \param[in] sPrimaryDnsSuffix  the suffix, or empty text for none. It is not checked.
    /// \return `false` if a value cannot be written. If that is the second one, the first one stays changed.
    ///
    /// \par Requires
    /// Elevation.
    static bool SetPrimaryDnsSuffix(const velmor::string& sPrimaryDnsSuffix);
    /// Reads the workgroup of the machine. On a member of a domain it is the short name of the domain.
    ///
    /// \param[out] sWorkgroupName  the workgroup
    /// \return `false` if the system does not return it.
    static bool GetWorkgroupName(velmor::string& sWorkgroupName);
    /// Sets the workgroup of the machine, through the local security authority.
    ///
    /// \param[in] sWorkgroupName  the workgroup, 1 to 32766 characters
    /// \return `false` if the name is empty or too long, or the local security authority refuses it. The workgroup is
    ///         then unchanged, unless closing the authority's handle was what failed.
    ///
    /// \par Requires
    /// Elevation.
    static bool SetWorkgroupName(const velmor::string& sWorkgroupName);

    /// @}
    /// \defgroup printers Diagnostic printers
    /// Write values as words into a stream.
    ///
    /// A value without a word is written as "Unknown : " and its number. The text goes into the stream's buffer; the
    /// stream's state is not changed, and text that cannot be written is lost. The printers write no trace and are as
    /// safe with threads as the stream is.
    /// @{

    /// Writes "Up", "Down", "Testing", "Unknown", "Dormant", "Not Present" or "Lower-Layer Down".
    /// \param[in,out] ofs           the stream
    /// \param[in]     enOperStatus  the state, from GetAdapterOperStatus()
    static void PrintAdapterStatus(std::wofstream& ofs, TOLVA_OPER_STATUS enOperStatus);
    /// Writes "Invalid", "Tentative", "Duplicate", "Deprecated" or "Preferred".
    /// \param[in,out] ofs         the stream
    /// \param[in]     enDadState  the state, from GetAdaptersIpAddrs()
    static void PrintDadState(std::wofstream& ofs, NL_DAD_STATE enDadState);
    /// Writes zone and level of a scope, such as "Zone = Default, Level = Link". A zone other than 0 is written as its
    /// number.
    /// \param[in,out] ofs      the stream
    /// \param[in]     ScopeId  the scope, from GetAdaptersIpAddrs()
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
