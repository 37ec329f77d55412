#include <support/operation/interface_key.h>

velmor::string InterfaceKey(const velmor::string& sInterfaces, const TOLVA::NIC_INFO& NicInfo)
{
    return sInterfaces + L"\\" + NicInfo.sNicGuid;
}

velmor::string InterfaceKey(const CallFrame& frame, const char* pszVariable, const velmor::string& sInterfaces,
                            const TOLVA::NIC_INFO& NicInfo)
{
    velmor::string sKey = InterfaceKey(sInterfaces, NicInfo);
    frame.Verbose(pszVariable, sKey);
    return sKey;
}
