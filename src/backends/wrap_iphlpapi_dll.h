#pragma once

#include <backends/pre_vista_api.h>
#include <support/operation/loaded_function.h>

/// SetAdapterIpAddress of IP Helper, which sets an adapter's IPv4 address on systems before Vista. Only import
/// libraries know it: no header declares it, and later systems do not have it.
class PreVistaAPI::Wrap_IPHLPAPI_DLL
{
public:
    Wrap_IPHLPAPI_DLL();

    /// Address and mask in host byte order. Returns a Windows error code, 1 where the function is missing.
    DWORD SetAdapterIpv4Address(const velmor::string& sNicGuid, unsigned long dwIpAddr, unsigned long dwSubnet) const;

private:
    using SetAdapterIpAddress = DWORD WINAPI(char* pszAdapter, BOOL bDhcp, ULONG ulAddress, ULONG ulMask,
                                             ULONG ulGateway);

    LoadedFunction<SetAdapterIpAddress> m_setAdapterIpAddress;
};
