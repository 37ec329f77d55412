#include "operations.h"

#include <cwchar>

#include <support/golden.h>
#include <support/import_patch.h>
#include <support/registry_scope.h>

#include <setupapi.h>

using namespace testing_support;

namespace torture
{
namespace
{

using Adapter = const TOLVA::NIC_INFO&;
constexpr auto BOTH = TOLVA::FAMILY_BOTH;

const velmor::ip_address ADDRESS(L"192.0.2.10");
const velmor::ip_address GATEWAY(L"192.0.2.1");

template <class Value>
std::string Text(const Value& value)
{
    if constexpr (std::is_same_v<Value, TOLVA::HARDWARE_ADDRESS>)
        return Show(velmor::string(value));
    else
        return Show(value);
}

template <class... Values>
std::string Answer(const Values&... values)
{
    return ((Text(values) + ' ') + ...);
}

/// The result and the output of an operation that has one.
template <class Output, class Call>
std::string Ask(Call call)
{
    Output output{};
    const bool result = call(output);
    return Answer(result, output);
}

TOLVA::ASSOC_IP_ADDR StaticAddress()
{
    TOLVA::ASSOC_IP_ADDR address;
    address.IpAddress = ADDRESS;
    address.SubnetPrefix = 24;
    return address;
}

TOLVA::ROUTE_INFO Route()
{
    TOLVA::ROUTE_INFO route;
    route.Destination = velmor::ip_address(L"198.51.100.0");
    route.PrefixLength = 24;
    route.NextHop = GATEWAY;
    return route;
}

std::string Conversions(Adapter)
{
    const velmor::ip_address v6(L"2001:db8::1");
    return Answer(TOLVA::ConvertIpAddressToDword(ADDRESS), TOLVA::ConvertDwordToIpAddress(0xC000020A),
                  TOLVA::ConvertDwordToPrefix(0xFFFFFF00), TOLVA::ConvertPrefixToDword(20),
                  TOLVA::ConvertNetmaskToPrefix(TOLVA::ConvertPrefixToNetmask(24)),
                  TOLVA::Convert_SOCKADDR_INET(TOLVA::Convert_SOCKADDR_INET(v6)),
                  TOLVA::HARDWARE_ADDRESS(velmor::string(L"01-02-03-04-05-06")),
                  velmor::ip_address(L"none").is_valid());
}

std::string TempFile(Adapter)
{
    velmor::string file;
    const bool made = TOLVA::GetTempFilename(file);
    return Answer(made, bool{::DeleteFileW(file.c_str()) != FALSE}); // its name is another each time
}

std::string Properties(Adapter)
{
    velmor::string description;
    velmor::string version;
    const auto first = TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION, description);
    const auto second = TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, version);
    return Answer(first, description, second, version);
}

std::string DhcpIdentity(Adapter adapter)
{
    unsigned long id = 0;
    velmor::string text;
    const bool result = TOLVA::GetDhcpServer(adapter, id, text);
    return Answer(result, id, text);
}

#define READS(Output, call)                                                                                            \
    {                                                                                                                  \
        "TOLVA::" #call, [](Adapter a) {                                                                               \
            (void)a;                                                                                                   \
            return Ask<Output>([&](Output& out) { return TOLVA::call; });                                              \
        }                                                                                                              \
    }
#define CHANGES(call)                                                                                                  \
    {                                                                                                                  \
        "TOLVA::" #call, [](Adapter a) { return Answer(TOLVA::call); }                                                 \
    }

std::intptr_t NoCommand(int, const wchar_t*, ...)
{
    return 0;
}

/// Stands for the library's imports of what would change this machine or end this process.
struct Fakes
{
    HMODULE library = ::GetModuleHandleW(L"ZELK_NM.DLL");
    ImportSlots spawn{library, "_wspawnlp", Address(&NoCommand)};
    ImportSlots sleep{library, "Sleep", Address(+[](DWORD) {})};
    ImportSlots device{library, "SetupDiEnumDeviceInfo",
                       Address(+[](HDEVINFO, DWORD, SP_DEVINFO_DATA*) -> BOOL { return TRUE; })};
    ImportSlots parameters{
        library, "SetupDiSetClassInstallParamsW",
        Address(+[](HDEVINFO, SP_DEVINFO_DATA*, SP_CLASSINSTALL_HEADER*, DWORD) -> BOOL { return TRUE; })};
    ImportSlots installer{library, "SetupDiCallClassInstaller",
                          Address(+[](DI_FUNCTION, HDEVINFO, SP_DEVINFO_DATA*) -> BOOL { return TRUE; })};

    template <class Function>
    static void* Address(Function* function)
    {
        return reinterpret_cast<void*>(function);
    }
};

/// Every setting of an adapter that the library reads.
void Seed(const TOLVA::NIC_INFO& adapter)
{
    static const std::wstring SET = L"SYSTEM\\CurrentControlSet\\";
    static const std::wstring LAN = L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
    const std::wstring guid = adapter.sNicGuid.c_str();
    const std::wstring ipv4 = SET + L"services\\Tcpip\\Parameters\\Interfaces\\" + guid;
    const std::wstring netClass = SET + L"Control\\Class\\" + LAN + adapter.sNicEnum.c_str();
    const struct
    {
        std::wstring key;
        const wchar_t* name;
        RegistryData data;
    } values[] = {
        {ipv4, L"EnableDHCP", DwordData(0)},
        {ipv4, L"NameServer", StringData(L"192.0.2.53")},
        {ipv4, L"Domain", StringData(L"example.org")},
        {ipv4, L"IPAutoconfigurationEnabled", DwordData(0)},
        {ipv4, L"DefaultGateway", StringData(std::wstring_view(L"192.0.2.1\0", 10), REG_MULTI_SZ)},
        {SET + L"services\\Tcpip6\\Parameters\\Interfaces\\" + guid, L"Dhcpv6State", DwordData(0)},
        {SET + L"services\\NetBT\\Parameters\\Interfaces\\Tcpip_" + guid, L"NetbiosOptions", DwordData(2)},
        {netClass, L"NetCfgInstanceId", StringData(guid)},
        {netClass, L"DriverDesc", StringData(L"Example adapter")},
        {netClass, L"DeviceInstanceID", StringData(adapter.sNicPci.c_str())},
        {SET + L"Control\\Network\\" + LAN + guid + L"\\Connection", L"Name", StringData(L"Ethernet")},
    };
    for (const auto& value : values)
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, value.key.c_str(), value.name, value.data.dwType, value.data.bytes.data(),
                          static_cast<DWORD>(value.data.bytes.size()));
}

} // namespace

const std::vector<Operation>& ReadingOperations()
{
    static const std::vector<Operation> all = {
        {"conversions", Conversions},
        {"TOLVA::GetTempFilename", TempFile},
        {"TOLVA::GetModuleProperty", Properties},
        {"TOLVA()", [](Adapter) { return TOLVA(), std::string(); }},
        READS(velmor::string, GetOwnDir(out)),
        READS(velmor::string, GetLogDir(out)),
        READS(std::vector<TOLVA::NIC_INFO>, GetAdapterList(out)),
        READS(unsigned long, GetAdapterIndex(a, out)),
        READS(velmor::string, GetAdapterIpconfigName(a, out)),
        READS(TOLVA::TOLVA_OPER_STATUS, GetAdapterOperStatus(a, out)),
        READS(TOLVA::FAMILY_TYPE, AddressFamilySupported(a, out)),
        READS(TOLVA::HARDWARE_ADDRESS, GetHardwareAddress(a, out)),
        READS(velmor::ip_address, GetDhcpServer(a, out)),
        {"TOLVA::GetDhcpServer (IAID)", DhcpIdentity},
        READS(std::vector<velmor::ip_address>, GetDnsServerList(a, out)),
        READS(bool, CanChangeAdapterOptions(a, out)),
        READS(std::vector<TOLVA::ROUTE_INFO>, GetAdapterRoutes(a, out)),
        READS(std::vector<TOLVA::ASSOC_IP_ADDR>, GetAdaptersIpAddrs(a, out)),
        READS(bool, IsDhcpEnabled(a, BOTH, out)),
        READS(std::vector<velmor::ip_address>, GetDefaultGatewayList(a, BOTH, out)),
        READS(bool, IsGatewayAutomatic(a, BOTH, out)),
        READS(bool, IsDnsAutomatic(a, BOTH, out)),
        READS(velmor::string, GetAdapterSpeed(a, out)),
        READS(double, GetAdapterLinkSpeed(a, out)),
        READS(velmor::string, GetAdapterDomain(a, out)),
        READS(bool, GetAutoconfigStatus(a, out)),
        READS(bool, GetNetBIOSOverTcpipStatus(a, out)),
        READS(velmor::string, GetComputerNameW(out)),
        READS(velmor::string, GetPrimaryDnsSuffix(out)),
        READS(velmor::string, GetFullComputerName(out)),
        READS(velmor::string, GetWorkgroupName(out)),
    };
    return all;
}

const std::vector<Operation>& ChangingOperations()
{
    static const std::vector<Operation> all = {
        CHANGES(DisableAdapter(a)),
        CHANGES(EnableAdapter(a)),
        CHANGES(SetHardwareAddress(a, TOLVA::HARDWARE_ADDRESS(velmor::string(L"02-00-00-00-00-01")))),
        CHANGES(SetAdaptersIpAddrs(a, {StaticAddress()})),
        CHANGES(AddAdapterRoute(a, Route())),
        CHANGES(SetDefaultGateway(a, GATEWAY)),
        CHANGES(ReturnGatewayToDhcp(a, BOTH)),
        CHANGES(SetDnsServerList(a, {ADDRESS, velmor::ip_address(L"2001:db8::53")})),
        CHANGES(ReturnDnsToDhcp(a, BOTH)),
        CHANGES(RenewDhcp(a, BOTH)),
        CHANGES(ReleaseDhcp(a, BOTH)),
        {"TOLVA::ReturnToDhcp",
         [](Adapter a) {
             const bool result = TOLVA::ReturnToDhcp(a, BOTH);
             Seed(a); // it is no DHCP client again
             return Answer(result);
         }},
    };
    return all;
}

std::vector<TOLVA::NIC_INFO> MakeAdapters()
{
    std::vector<TOLVA::NIC_INFO> adapters;
    TOLVA::GetAdapterList(adapters);
    while (adapters.size() < 2) // one that does not exist is one, too: its operations fail, always alike
        adapters.emplace_back().sNicGuid = L"{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C}";
    for (std::size_t i = 0; i < adapters.size(); ++i)
    {
        adapters[i].sNicEnum = (L"004" + std::to_wstring(i)).c_str();
        adapters[i].sNicPci = (L"PCI\\VEN_8086&DEV_10D3\\3&" + std::to_wstring(i)).c_str();
        Seed(adapters[i]);
    }
    static const Fakes fakes;
    return adapters;
}

} // namespace torture
