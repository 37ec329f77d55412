#include <algorithm>
#include <vector>

#include <adapters/wrap_devmgr_dll.h>
#include <support/platform/first_use.h>
#include <support/registry/registry.h>
#include <support/trace/call_frame.h>
#include <support/values/text.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr const wchar_t* LAN_DEVICE_CLASS =
    L"CurrentControlSet\\Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";

} // namespace

bool TOLVA::CanChangeAdapterOptions(const NIC_INFO& NicInfo, bool& bCanChangeOptions)
{
    bCanChangeOptions = false;
    return RunOperation("TOLVA::CanChangeAdapterOptions", [&](const CallFrame& frame) {
        if (NicInfo.sNicPci.empty())
            return frame.Fail("Bad NIC PCI"); // not "PCI ID", as the other device operations say

        const velmor::Registry_System registry;
        const velmor::string sClassKey(LAN_DEVICE_CLASS);
        std::vector<velmor::string> subkeys;
        if (!registry.EnumerateKeys(L"SYSTEM\\" + sClassKey, subkeys))
            return frame.FailAs("... ending( velmor::Registry_System::EnumerateKeys failed) ");

        bCanChangeOptions = std::any_of(subkeys.begin(), subkeys.end(), [&](const velmor::string& sName) {
            const velmor::string sSubKey = sClassKey + L"\\" + sName;
            frame.Verbose("sSubKey", sSubKey);
            velmor::string sDeviceInstance;
            if (!registry.GetString(sSubKey, L"DeviceInstance", sDeviceInstance))
                return false;
            frame.Verbose("Found DeviceInstance", "sDeviceInstance", sDeviceInstance);
            return velmor::EqualIgnoringCase(sDeviceInstance, NicInfo.sNicPci);
        });
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
