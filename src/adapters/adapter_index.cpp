#include <support/operation/adapter_operation.h>
#include <zelk_nm/tolva.h>

bool TOLVA::GetAdapterIndex(const NIC_INFO& NicInfo, unsigned long& ulIndex)
{
    return RunOnAdapter("TOLVA::GetAdapterIndex", NicInfo, [&](const CallFrame& frame) {
        frame.Verbose("NicInfo.sNicGuid", NicInfo.sNicGuid);

        // The name by which GetInterfaceInfo lists the adapter. It is declared changeable and is not changed.
        const velmor::string sDeviceName = L"\\DEVICE\\TCPIP_" + NicInfo.sNicGuid;
        const DWORD dwRc = ::GetAdapterIndex(const_cast<wchar_t*>(sDeviceName.c_str()), &ulIndex);
        if (dwRc != NO_ERROR)
            return frame.FailAs("... ending(GetAdapterIndex failed)", "dwRc", dwRc);
        frame.Verbose("ulAdapterIndex", ulIndex);
        return frame.Succeed();
    });
}
