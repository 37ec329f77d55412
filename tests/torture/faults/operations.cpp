// A DLL that uses ZELK_NM.DLL, so that the two can be loaded and unloaded together, and calls each of its operations.

#include <cstdio>
#include <cstring>
#include <iterator>

#include <zelk_nm/tolva.h>

#include "operations.h"

namespace
{

std::string Text(const velmor::string& sText)
{
    return sText.narrow_c_str();
}

std::string Text(const velmor::ip_address& address)
try
{
    return Text(static_cast<velmor::string>(address));
}
catch (const velmor::NetworkError&)
{
    return "invalid";
}

std::string Text(unsigned long ulNumber)
{
    return std::to_string(ulNumber);
}

std::string Text(const TOLVA::NIC_INFO& NicInfo)
{
    std::string sText;
    for (const auto pField : {&TOLVA::NIC_INFO::sNicDesc, &TOLVA::NIC_INFO::sNicFriendlyName,
                              &TOLVA::NIC_INFO::sNicEnum, &TOLVA::NIC_INFO::sNicGuid, &TOLVA::NIC_INFO::sNicName,
                              &TOLVA::NIC_INFO::sNicPci, &TOLVA::NIC_INFO::sNicType, &TOLVA::NIC_INFO::sNicHwAddr})
        sText += Text(NicInfo.*pField) + "/";
    return sText;
}

std::string Text(const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    return Text(IpAddr.IpAddress) + "/" + Text(IpAddr.SubnetPrefix) + "%" + Text(IpAddr.ulIndex) + "," +
           Text(IpAddr.enDadState) + Text(IpAddr.bAutomatic);
}

std::string Text(const TOLVA::ROUTE_INFO& Route)
{
    return Text(Route.Destination) + "/" + Text(Route.PrefixLength) + ">" + Text(Route.NextHop) + "%" +
           Text(Route.ulIndex) + "," + Text(Route.ulMetric);
}

template <class T>
std::string Text(const std::vector<T>& list)
{
    std::string sText;
    for (const T& element : list)
        sText += Text(element) + " ";
    return sText;
}

/// What the operations are given, and where they answer.
struct Arguments
{
    TOLVA::NIC_INFO NicInfo;
    velmor::string sText{L"before"};
    const velmor::string sLibrary{L"ZELK_NM.DLL"};
    const velmor::string sHwAddr{L"00-1A-2B-3C-4D-5E"};
    bool bFlag = true;
    bool bOtherFlag = false;
    unsigned long ulNumber = 4711;
    double dSpeed = 4711;
    TOLVA::FAMILY_TYPE enFamily = TOLVA::FAMILY_BOTH;
    TOLVA::TOLVA_OPER_STATUS enStatus = TOLVA::OPER_STATUS_TESTING;
    TOLVA::HARDWARE_ADDRESS HwAddr{velmor::string(L"02-01-02-03-04-05")};
    velmor::ip_address Address{velmor::string(L"192.0.2.10")};
    velmor::ip_address Address6{velmor::string(L"2001:db8::7")};
    const velmor::ip_address Invalid{velmor::string(L"none")};
    std::vector<TOLVA::NIC_INFO> Adapters;
    std::vector<velmor::ip_address> Addresses;
    std::vector<TOLVA::ASSOC_IP_ADDR> IpAddrs;
    TOLVA::ROUTE_INFO Route;
    std::vector<TOLVA::ROUTE_INFO> Routes;
    MIB_TCP6TABLE table = {};

    explicit Arguments(const wchar_t* pszGuid)
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

    [[nodiscard]] std::string Texts() const
    {
        std::string sTexts = "text=" + Text(sText) + ";flags=" + Text(bFlag) + Text(bOtherFlag);
        sTexts += ";number=" + Text(ulNumber) + ";speed=" + std::to_string(dSpeed) + ";family=" + Text(enFamily);
        sTexts += ";status=" + Text(enStatus) + ";hardware=" + Text(HwAddr) + ";address=" + Text(Address);
        sTexts += ";adapters=" + Text(Adapters) + ";addresses=" + Text(Addresses) + ";assigned=" + Text(IpAddrs);
        return sTexts + ";routes=" + Text(Routes) + ";";
    }
};

struct Operation
{
    const char* pszName;
    bool (*pCall)(Arguments& a);
    const char* pszAllowed = "";
};

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
#define WITHOUT_RESULT(call, ...)                                                                                      \
    {                                                                                                                  \
        "TOLVA::" #call, []([[maybe_unused]] Arguments& a) { return TOLVA::call, true; }, __VA_ARGS__                  \
    }

/// Asks a question that fails when the platform does.
bool Fails()
{
    velmor::string sText;
    return !TOLVA::GetOwnDir(sText);
}

// What a switch says of both families is right only when both are; each can be unreadable, and then the default counts.
constexpr Operation OPERATIONS[] = {
    {"TOLVA()", [](Arguments&) { return TOLVA(), true; }},
    {"TOLVA::GetModuleProperty(TOLVA_GMP_DESCRIPTION)",
     [](Arguments& a) { return TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION, a.sText) == 0; }},
    {"TOLVA::GetModuleProperty(TOLVA_GMP_VERSION)",
     [](Arguments& a) { return TOLVA::GetModuleProperty(TOLVA::TOLVA_GMP_VERSION, a.sText) == 0; },
     "text=Error;|text=before;"},
    WITHOUT_RESULT(GetResourceVersionStr(a.sLibrary, a.sText), "text=Error;|text=before;"),
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
    OPERATION(GetDnsServerList(a.NicInfo, a.Addresses), "!addresses=192.0.2.10 2001:db8::7 ;"),
    OPERATION(CanChangeAdapterOptions(a.NicInfo, a.bFlag), "!flags=0"),
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
    OPERATION(GetAdaptersIpAddrs(a.NicInfo, a.IpAddrs), "!assigned=192.0.2.10/24%0,00 2001:db8::7/0%0,00 ;"),
    OPERATION(SetAdaptersIpAddrs(a.NicInfo, a.IpAddrs)),
    OPERATION(IsDhcpEnabled(a.NicInfo, TOLVA::FAMILY_BOTH, a.bFlag)),
    OPERATION(IsDhcpEnabled(a.NicInfo, TOLVA::FAMILY_IPV4, a.bOtherFlag)),
    OPERATION(RenewDhcp(a.NicInfo, a.enFamily)),
    OPERATION(ReleaseDhcp(a.NicInfo, a.enFamily)),
    OPERATION(ReturnToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(GetDefaultGatewayList(a.NicInfo, a.enFamily, a.Addresses), "!"),
    OPERATION(SetDefaultGateway(a.NicInfo, a.Address)),
    OPERATION(SetDefaultGateway(a.NicInfo, a.Address6)),
    OPERATION(IsGatewayAutomatic(a.NicInfo, TOLVA::FAMILY_IPV4, a.bOtherFlag), "flags=11;"),
    OPERATION(ReturnGatewayToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(SetDnsServerList(a.NicInfo, a.Addresses)),
    OPERATION(IsDnsAutomatic(a.NicInfo, TOLVA::FAMILY_BOTH, a.bFlag), "flags=10;"),
    OPERATION(ReturnDnsToDhcp(a.NicInfo, a.enFamily)),
    OPERATION(GetAdapterSpeed(a.NicInfo, a.sText), "text=0.0 Mbps;|text=Unknown;"),
    OPERATION(GetAdapterLinkSpeed(a.NicInfo, a.dSpeed)),
    OPERATION(GetAdapterDomain(a.NicInfo, a.sText), "text=;"),
    OPERATION(GetAutoconfigStatus(a.NicInfo, a.bFlag), "flags=10;"),
    OPERATION(GetNetBIOSOverTcpipStatus(a.NicInfo, a.bFlag), "flags=10;"),
    OPERATION(GetComputerNameW(a.sText)),
    OPERATION(GetPrimaryDnsSuffix(a.sText)),
    OPERATION(GetFullComputerName(a.sText)),
    OPERATION(GetWorkgroupName(a.sText)),
    OPERATION(SetComputerNameW(a.sText)),
    OPERATION(SetPrimaryDnsSuffix(a.sText)),
    OPERATION(SetWorkgroupName(a.sText)),
    {"planted leak", [](Arguments&) { return !Fails() || ::CreateEventW(nullptr, TRUE, TRUE, nullptr) == nullptr; }},
    {"planted block", [](Arguments&) { return !Fails() || ::HeapAlloc(::GetProcessHeap(), 0, 8) == nullptr; }},
    {"planted file", [](Arguments& a) { return !Fails() || TOLVA::GetTempFilename(a.sText); }},
    {"planted mutex",
     [](Arguments&) {
         if (Fails())
             ::WaitForSingleObject(::CreateMutexW(nullptr, FALSE, L"TOLVA_trace.log"), INFINITE);
         return true;
     }},
    {"planted hang",
     [](Arguments&) {
         while (Fails())
             ::Sleep(60000);
         return true;
     }},
    {"planted exception", [](Arguments&) { return Fails() ? throw 1 : true; }},
    {"planted crash", [](Arguments& a) { return !Fails() || *reinterpret_cast<volatile char*>(a.ulNumber) == 0; }},
    {"planted answer", [](Arguments& a) { return !Fails() || (a.ulNumber = 1) == 1; }},
    {"planted change", [](Arguments& a) { return !Fails() || (a.ulNumber = 1) == 2; }},
    {"planted memory",
     [](Arguments& a) {
         static bool bFailed = false;
         bFailed = bFailed || Fails();
         a.ulNumber = bFailed;
         return true;
     }},
};

} // namespace

bool CallOperation(unsigned int uiOperation, const wchar_t* pszGuid, void (*pCount)(bool bBegin), Answer& answer)
{
    if (uiOperation >= std::size(OPERATIONS))
        return false;
    const Operation& operation = OPERATIONS[uiOperation];
    answer = {};
    answer.bException = true;
    std::snprintf(answer.name, sizeof(answer.name), "%s", operation.pszName);
    std::snprintf(answer.allowed, sizeof(answer.allowed), "%s", operation.pszAllowed);
    if (pCount == nullptr)
        return true;
    Arguments arguments(pszGuid);
    const std::string sBefore = arguments.Texts();
    try
    {
        pCount(true);
        answer.bResult = operation.pCall(arguments);
        answer.bException = false;
    }
    catch (...)
    {
    }
    pCount(false);
    const std::string sTexts = arguments.Texts();
    answer.bUnchanged = sTexts == sBefore;
    std::snprintf(answer.text, sizeof(answer.text), "%s", sTexts.c_str());
    return true;
}
