#include <optional>

#include <adapters/device_class.h>
#include <adapters/subkey_search.h>
#include <adapters/wrap_devmgr_dll.h>
#include <support/platform/first_use.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

bool TOLVA::CanChangeAdapterOptions(const NIC_INFO& NicInfo, bool& bCanChangeOptions)
{
    bCanChangeOptions = false;
    return RunOperation("TOLVA::CanChangeAdapterOptions", [&](const CallFrame& frame) {
        if (NicInfo.sNicPci.empty())
            return frame.Fail("Bad NIC PCI"); // not "PCI ID", as the other device operations say

        const velmor::Registry_System registry;
        std::optional<velmor::string> sSubkey;
        if (!FindSubkey(frame, registry,
                        {.sKey = LAN_DEVICE_CLASS,
                         .pszValue = L"DeviceInstance",
                         .pszFound = "Found DeviceInstance",
                         .pszVariable = "sDeviceInstance",
                         .pszSubkeyPath = "sSubKey"},
                        NicInfo.sNicPci, sSubkey))
            return false;
        bCanChangeOptions = sSubkey.has_value();
        if (bCanChangeOptions)
            frame.Verbose("Found PCI -> GUID match");
        frame.Information("bCanChangeOptions", bCanChangeOptions);
        return frame.Succeed();
    });
}

bool TOLVA::ChangeAdapterOptions(const NIC_INFO& NicInfo)
{
    return RunOperation("TOLVA::ChangeAdapterOptions", [&](const CallFrame& frame) {
        if (NicInfo.sNicPci.empty())
            return frame.Fail("Bad NIC PCI ID");
        velmor::FirstUse<Wrap_DEVMGR_DLL>().ShowProperties(L"/DeviceId " + NicInfo.sNicPci);
        return frame.Succeed();
    });
}
