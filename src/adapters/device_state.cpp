#include <support/platform/handles.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

// What is handed to the device installer has the sizes that its interface states.
static_assert(sizeof(SP_DEVINFO_DATA) == 32);
static_assert(sizeof(SP_CLASSINSTALL_HEADER) == 8);
static_assert(sizeof(SP_PROPCHANGE_PARAMS) == 20);

struct DestroyDeviceSet
{
    void operator()(HDEVINFO hDevInfo) const noexcept { ::SetupDiDestroyDeviceInfoList(hDevInfo); }
};
using UniqueDeviceSet = velmor::UniqueHandle<HDEVINFO, DestroyDeviceSet, -1>;

bool ChangeState(const char* pszName, const TOLVA::NIC_INFO& NicInfo, unsigned long ulNewState)
{
    return RunOperation(pszName, [&](const CallFrame& frame) {
        if (NicInfo.sNicPci.empty())
            return frame.Fail("Bad NIC PCI ID");
        frame.Verbose("NicInfo.sNicPci", NicInfo.sNicPci);

        // With DIGCF_DEVICEINTERFACE the enumerator may be a device's instance path: the set then holds just this
        // device.
        const UniqueDeviceSet devices(::SetupDiGetClassDevsW(&TOLVA::NIC_DEVICECLASS_GUID, NicInfo.sNicPci.c_str(),
                                                             nullptr, DIGCF_DEVICEINTERFACE));
        if (!devices)
            return frame.Fail("SetupDiGetClassDevs failed", "dwLastError", ::GetLastError());
        if (!TOLVA::AdapterStateChange(ulNewState, 0, devices.Get()))
            return frame.Fail("AdapterStateChange failed");
        return frame.Succeed();
    });
}

} // namespace

bool TOLVA::EnableAdapter(const NIC_INFO& NicInfo)
{
    return ChangeState("TOLVA::EnableAdapter", NicInfo, DICS_ENABLE);
}

bool TOLVA::DisableAdapter(const NIC_INFO& NicInfo)
{
    return ChangeState("TOLVA::DisableAdapter", NicInfo, DICS_DISABLE);
}

bool TOLVA::AdapterStateChange(unsigned long ulNewState, unsigned long ulMemberIndex, HDEVINFO hDevInfo)
{
    return RunOperation("TOLVA::AdapterStateChange", [&](const CallFrame& frame) {
        SP_DEVINFO_DATA device = {};
        device.cbSize = sizeof(device);
        if (!::SetupDiEnumDeviceInfo(hDevInfo, ulMemberIndex, &device))
            return frame.Fail("SetupDiEnumDeviceInfo failed", "dwLastError", ::GetLastError());

        // In all hardware profiles, so that it holds with whichever the machine starts next.
        SP_PROPCHANGE_PARAMS change = {};
        change.ClassInstallHeader.cbSize = sizeof(change.ClassInstallHeader);
        change.ClassInstallHeader.InstallFunction = DIF_PROPERTYCHANGE;
        change.StateChange = ulNewState;
        change.Scope = DICS_FLAG_GLOBAL;
        if (!::SetupDiSetClassInstallParamsW(hDevInfo, &device, &change.ClassInstallHeader, sizeof(change)))
            return frame.Fail("SetupDiSetClassInstallParams failed", "dwLastError", ::GetLastError());
        if (!::SetupDiCallClassInstaller(DIF_PROPERTYCHANGE, hDevInfo, &device))
            return frame.Fail("SetupDiCallClassInstaller failed", "dwLastError", ::GetLastError());
        return frame.Succeed();
    });
}

bool TOLVA::SetHardwareAddress(const NIC_INFO& NicInfo, const HARDWARE_ADDRESS& HwAddr)
{
    return RunOperation("TOLVA::SetHardwareAddress", [&](const CallFrame& frame) {
        if (NicInfo.sNicEnum.empty())
            return frame.Fail("Bad NIC Enum");
        if (NicInfo.sNicPci.empty())
            return frame.Fail("Bad NIC PCI ID");
        const velmor::string sEnumKey = NETWORK_CLASS + L"\\" + NicInfo.sNicEnum;
        frame.Verbose("sEnumKey", sEnumKey);
        const velmor::string sHwAddr = HwAddr;
        frame.Verbose("sHwAddr", sHwAddr);

        if (!velmor::Registry_System().SetString(sEnumKey, L"NetworkAddress", sHwAddr))
            return frame.Fail("Set 'NetworkAddress' failed");
        // "NetworkAddress" is the keyword that NDIS gives to every driver, which reads it when its device starts.
        if (!DisableAdapter(NicInfo))
            return frame.Fail("DisableAdapter failed");
        if (!EnableAdapter(NicInfo))
            return frame.Fail("EnableAdapter failed");
        return frame.Succeed();
    });
}
