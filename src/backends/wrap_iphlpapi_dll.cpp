#include <backends/wrap_iphlpapi_dll.h>

#include <zelk_common/looked_up_functions.h>

namespace
{

constexpr LoadedFunctionTexts TEXTS = {.pszLibrary = zelk_common::IP_HELPER,
                                       .pszFunction = zelk_common::SET_ADAPTER_IP_ADDRESS,
                                       .pszConstructor = "PreVistaAPI::Wrap_IPHLPAPI_DLL::Wrap_IPHLPAPI_DLL",
                                       .pszNoLibrary = "LoadLibrary('IPHLPAPI.DLL') failed",
                                       .pszNoFunction = "GetProcAddress('SetAdapterIpAddress') failed",
                                       .pszDestructor = "PreVistaAPI::Wrap_IPHLPAPI_DLL::~Wrap_IPHLPAPI_DLL",
                                       .pszFreed = "FreeLibrary('IPHLPAPI.DLL')"};

} // namespace

PreVistaAPI::Wrap_IPHLPAPI_DLL::Wrap_IPHLPAPI_DLL() : m_setAdapterIpAddress(TEXTS) {}

DWORD PreVistaAPI::Wrap_IPHLPAPI_DLL::SetAdapterIpv4Address(const velmor::string& sNicGuid, unsigned long dwIpAddr,
                                                            unsigned long dwSubnet) const
{
    if (m_setAdapterIpAddress.Get() == nullptr)
        return ERROR_INVALID_FUNCTION;

    // The platform takes the name as changeable text of this size; a longer one is cut.
    constexpr std::size_t NAME_SIZE = 39;
    char szAdapter[NAME_SIZE] = {};
    std::string_view(sNicGuid.narrow_c_str()).copy(szAdapter, NAME_SIZE - 1);
    const DWORD dwRc = m_setAdapterIpAddress.Get()(szAdapter, FALSE, ::htonl(dwIpAddr), ::htonl(dwSubnet), 0);
    CallFrame::WithoutStart("PreVistaAPI::Wrap_IPHLPAPI_DLL::SetAdapterIpv4Address")
        .Verbose("SetAdapterIpAddress", "dwRc", dwRc);
    return dwRc;
}
