#include <adapters/device_class.h>

#include <zelk_nm/tolva.h>

// GUID_NDIS_LAN_CLASS of the driver kit, twice: as a number for the device installer, as text for the registry.
const GUID TOLVA::NIC_DEVICECLASS_GUID = {0xAD498944, 0x762F, 0x11D0, {0x8D, 0xCB, 0x00, 0xC0, 0x4F, 0xC3, 0x35, 0x8C}};
const wchar_t* const LAN_DEVICE_CLASS =
    L"CurrentControlSet\\Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";
