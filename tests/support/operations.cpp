#include <support/operations.h>

#include <support/golden.h>

namespace testing_support
{

Arguments::Arguments(const wchar_t* pszGuid)
{
    NicInfo.sNicGuid = pszGuid;
    NicInfo.sNicName = velmor::string(L"\\DEVICE\\TCPIP_") + pszGuid;
    NicInfo.sNicEnum = ADAPTER_KEY;
    NicInfo.sNicPci = ADAPTER_DEVICE;
    Addresses = {Address, Address6};
    IpAddrs.resize(2);
    IpAddrs[0].IpAddress = Address;
    IpAddrs[0].SubnetPrefix = 24;
    IpAddrs[1].IpAddress = Address6;
    Route.ulIndex = 1;
    Route.Destination = Route.NextHop = Address;
    Route.PrefixLength = 32;
}

std::string Arguments::Texts() const
{
    return "text=" + Show(sText) + ";flags=" + Show(bFlag, bOtherFlag) + ";number=" + Show(ulNumber) +
           ";speed=" + Show(dSpeed) + ";family=" + Show(enFamily) + ";status=" + Show(enStatus) +
           ";hardware=" + Show(HwAddr) + ";address=" + Show(Address) + ";adapters=" + Show(Adapters) +
           ";addresses=" + Show(Addresses) + ";assigned=" + Show(IpAddrs) + ";routes=" + Show(Routes) + ";";
}

namespace
{

/// An operation and what it may answer by contract when something fails.
#define OPERATION(call, ...)                                                                                           \
    {                                                                                                                  \
        "TOLVA::" #call, []([[maybe_unused]] Arguments& a) -> bool { return TOLVA::call; }, __VA_ARGS__                \
    }
/// One that cannot fail: its result is right whatever happens.
#define RESULT(field, call)                                                                                            \
    {                                                                                                                  \
        "TOLVA::" #call, []([[maybe_unused]] Arguments& a) { return a.field = TOLVA::call, true; }                     \
    }

// What a switch says of both families is right only when both are; each can be unreadable, and then the default counts.
constexpr Operation OPERATIONS[] = {
    {"TOLVA()", [](Arguments&) { return TOLVA(), true; }},
    OPERATION(GetModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION, a.sText) == 0),
    OPERATION(GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, a.sText) == 0, "text=Error;|text=before;"),
    {"TOLVA::GetResourceVersionStr(a.sLibrary, a.sText)",
     [](Arguments& a) { return TOLVA::GetResourceVersionStr(a.sLibrary, a.sText), true; }, "text=Error;|text=before;"},
    OPERATION(GetOwnDir(a.sText)),
    OPERATION(GetLogDir(a.sText), "text=;"),
    {"TOLVA::GetTempFilename(a.sText)",
     [](Arguments& a) {
         return TOLVA::GetTempFilename(a.sText) && (::DeleteFileW(a.sText.c_str()), a.sText = L"made", true);
     }},
    RESULT(ulNumber, ConvertIpAddressToDword(a.Address)),
    RESULT(ulNumber, ConvertIpAddressToDword(a.Invalid)),
    RESULT(Address, ConvertDwordToIpAddress(0xC0000201)),
    RESULT(ulNumber, ConvertDwordToPrefix(0xFFFFFF00)),
    RESULT(ulNumber, ConvertPrefixToDword(24)),
    RESULT(ulNumber, ConvertNetmaskToPrefix(a.Address)),
    RESULT(Address, ConvertPrefixToNetmask(24)),
    RESULT(Address, Convert_SOCKADDR_INET(TOLVA::Convert_SOCKADDR_INET(a.Address6))),
    RESULT(Address, Convert_SOCKET_ADDRESS(SOCKET_ADDRESS{})),
    RESULT(HwAddr, HARDWARE_ADDRESS(a.sHwAddr)),
    OPERATION(GetAdapterList(a.Adapters), "!*"),
    OPERATION(GetAdapterIndex(a.NicInfo, a.ulNumber), "!"),
    OPERATION(GetAdapterIpconfigName(a.NicInfo, a.sText)),
    OPERATION(GetAdapterOperStatus(a.NicInfo, a.enStatus)),
    OPERATION(AddressFamilySupported(a.NicInfo, a.enFamily)),
    OPERATION(GetHardwareAddress(a.NicInfo, a.HwAddr)),
    OPERATION(GetDhcpServer(a.NicInfo, a.Address)),
    OPERATION(GetDhcpServer(a.NicInfo, a.ulNumber, a.sText)),
    OPERATION(GetDnsServerList(a.NicInfo, a.Addresses), "!addresses=[192.0.2.10, 2001:db8::7];"),
    OPERATION(CanChangeAdapterOptions(a.NicInfo, a.bFlag), "!flags=false"),
    OPERATION(EnableAdapter(a.NicInfo)),
    OPERATION(DisableAdapter(a.NicInfo)),
    OPERATION(AdapterStateChange(1, 0, nullptr)),
    OPERATION(SetHardwareAddress(a.NicInfo, a.HwAddr)),
    OPERATION(ChangeAdapterOptions(a.NicInfo)),
    {"TOLVA::GetTcp6Table(&a.table, a.ulNumber, true)",
     [](Arguments& a) {
         a.ulNumber = sizeof(a.table);
         const bool bRead = TOLVA::GetTcp6Table(&a.table, a.ulNumber, true) == NO_ERROR;
         a.ulNumber = 4711; // connections come and go
         return bRead;
     }},
    OPERATION(GetAdapterRoutes(a.NicInfo, a.Routes), "!"),
    OPERATION(AddAdapterRoute(a.NicInfo, a.Route)),
    OPERATION(
        GetAdaptersIpAddrs(a.NicInfo, a.IpAddrs),
        "!assigned=[192.0.2.10 prefix 24 if 0 manual dad 0 scope 0, 2001:db8::7 prefix 0 if 0 manual dad 0 scope 0];"),
    OPERATION(SetAdaptersIpAddrs(a.NicInfo, a.IpAddrs), "^"),
    OPERATION(IsDhcpEnabled(a.NicInfo, a.enFamily, a.bFlag)),
    OPERATION(IsDhcpEnabled(a.NicInfo, TOLVA::FAMILY_IPV4, a.bOtherFlag)),
    OPERATION(RenewDhcp(a.NicInfo, a.enFamily)),
    OPERATION(ReleaseDhcp(a.NicInfo, a.enFamily)),
    OPERATION(ReturnToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(GetDefaultGatewayList(a.NicInfo, a.enFamily, a.Addresses), "!"),
    OPERATION(SetDefaultGateway(a.NicInfo, a.Address)),
    OPERATION(SetDefaultGateway(a.NicInfo, a.Address6)),
    OPERATION(IsGatewayAutomatic(a.NicInfo, TOLVA::FAMILY_IPV4, a.bOtherFlag), "flags=true true;"),
    OPERATION(ReturnGatewayToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(SetDnsServerList(a.NicInfo, a.Addresses)),
    OPERATION(IsDnsAutomatic(a.NicInfo, a.enFamily, a.bFlag), "flags=true false;"),
    OPERATION(ReturnDnsToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(GetAdapterSpeed(a.NicInfo, a.sText), "text=0.0 Mbps;|text=Unknown;"),
    OPERATION(GetAdapterLinkSpeed(a.NicInfo, a.dSpeed)),
    OPERATION(GetAdapterDomain(a.NicInfo, a.sText), "text=;"),
    OPERATION(GetAutoconfigStatus(a.NicInfo, a.bFlag), "flags=true false;"),
    OPERATION(GetNetBIOSOverTcpipStatus(a.NicInfo, a.bFlag), "flags=true false;"),
    OPERATION(GetComputerNameW(a.sText)),
    OPERATION(GetPrimaryDnsSuffix(a.sText)),
    OPERATION(GetFullComputerName(a.sText)),
    OPERATION(GetWorkgroupName(a.sText)),
    OPERATION(SetComputerNameW(a.sText)),
    OPERATION(SetPrimaryDnsSuffix(a.sText)),
    OPERATION(SetWorkgroupName(a.sText)),
};

} // namespace

std::span<const Operation> Operations()
{
    return OPERATIONS;
}

} // namespace testing_support
