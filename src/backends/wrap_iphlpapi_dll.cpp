#include <backends/wrap_iphlpapi_dll.h>

#include <support/platform/module_function.h>
#include <support/trace/call_frame.h>

PreVistaAPI::Wrap_IPHLPAPI_DLL::Wrap_IPHLPAPI_DLL() : m_hModule(::LoadLibraryW(L"IPHLPAPI.DLL"))
{
    const CallFrame frame = CallFrame::WithoutStart("PreVistaAPI::Wrap_IPHLPAPI_DLL::Wrap_IPHLPAPI_DLL");
    if (!m_hModule)
    {
        frame.Error("LoadLibrary('IPHLPAPI.DLL') failed", "dwLastError", ::GetLastError());
        return;
    }
    m_pSetAdapterIpAddress = velmor::FindFunction<SetAdapterIpAddress>(m_hModule.Get(), "SetAdapterIpAddress");
    if (m_pSetAdapterIpAddress == nullptr)
        frame.Error("GetProcAddress('SetAdapterIpAddress') failed", "dwLastError", ::GetLastError());
}

PreVistaAPI::Wrap_IPHLPAPI_DLL::~Wrap_IPHLPAPI_DLL()
{
    if (m_hModule)
        CallFrame::WithoutStart("PreVistaAPI::Wrap_IPHLPAPI_DLL::~Wrap_IPHLPAPI_DLL")
            .Verbose("FreeLibrary('IPHLPAPI.DLL')");
}

DWORD PreVistaAPI::Wrap_IPHLPAPI_DLL::SetAdapterIpv4Address(const velmor::string& sNicGuid, unsigned long dwIpAddr,
                                                            unsigned long dwSubnet) const
{
    if (m_pSetAdapterIpAddress == nullptr)
        return ERROR_INVALID_FUNCTION;

    // The platform takes the name as changeable text of this size; a longer one is cut.
    constexpr std::size_t NAME_SIZE = 39;
    char szAdapter[NAME_SIZE] = {};
    std::string_view(sNicGuid.narrow_c_str()).copy(szAdapter, NAME_SIZE - 1);
    const DWORD dwRc = m_pSetAdapterIpAddress(szAdapter, FALSE, ::htonl(dwIpAddr), ::htonl(dwSubnet), 0);
    CallFrame::WithoutStart("PreVistaAPI::Wrap_IPHLPAPI_DLL::SetAdapterIpv4Address")
        .Verbose("SetAdapterIpAddress", "dwRc", dwRc);
    return dwRc;
}
