#pragma once

#include <backends/pre_vista_api.h>
#include <support/platform/handles.h>

/// The one function of IP Helper that has no declaration: it sets an adapter's IPv4 address on systems before Vista.
class PreVistaAPI::Wrap_IPHLPAPI_DLL
{
public:
    /// Loads the library and looks the function up. Where either is missing every later call answers 1.
    Wrap_IPHLPAPI_DLL();
    ~Wrap_IPHLPAPI_DLL();
    Wrap_IPHLPAPI_DLL(const Wrap_IPHLPAPI_DLL&) = delete;
    Wrap_IPHLPAPI_DLL& operator=(const Wrap_IPHLPAPI_DLL&) = delete;

    /// Address and mask in host byte order. Returns a Windows error code.
    DWORD SetAdapterIpv4Address(const velmor::string& sNicGuid, unsigned long dwIpAddr, unsigned long dwSubnet) const;

private:
    using SetAdapterIpAddress = DWORD WINAPI(char* pszAdapter, BOOL bDhcp, ULONG ulAddress, ULONG ulMask,
                                             ULONG ulGateway);

    velmor::UniqueModule m_hModule;
    SetAdapterIpAddress* m_pSetAdapterIpAddress = nullptr;
};
