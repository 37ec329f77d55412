#include <state/reading/devices.h>

#include <algorithm>

#include <initguid.h>
#include <winsock2.h>

#include <windows.h>

#include <cfgmgr32.h>
#include <devguid.h>
#include <setupapi.h>

#include <state/platform/handles.h>
#include <state/platform/registry.h>
#include <state/platform/registry_keys.h>
#include <state/platform/table_buffer.h>
#include <state/platform/utf8.h>
#include <state/reading/device_problems.h>
#include <state/reading/reading.h>
#include <state/reading/stored_key.h>
#include <state/values/registry_data.h>

namespace zelk
{
namespace
{

using UniqueDeviceSet = std::unique_ptr<void, Release<::SetupDiDestroyDeviceInfoList>>;

constexpr const char* MISSING = "Which devices are disabled or have failed is not known.";

/// A text among the registry properties of a device; empty where it has none, nothing when it cannot be read.
std::optional<std::string> Property(Reading& reading, HDEVINFO set, SP_DEVINFO_DATA& device, DWORD property)
{
    TableBuffer buffer(512);
    DWORD type = REG_NONE;
    DWORD length = 0;
    const DWORD code = buffer.Fill(ERROR_INSUFFICIENT_BUFFER, [&](std::byte* data, ULONG& size) -> DWORD {
        const BOOL done = ::SetupDiGetDeviceRegistryPropertyW(set, &device, property, &type,
                                                              reinterpret_cast<BYTE*>(data), size, &length);
        size = length;
        return done ? NO_ERROR : ::GetLastError();
    });
    if (code == NO_ERROR)
        return type == REG_SZ ? ToUtf8(DecodeText(buffer.First(length))) : std::string();
    if (code == ERROR_INVALID_DATA || code == ERROR_FILE_NOT_FOUND) // it has none
        return std::string();
    reading.Report(code, "SetupDiGetDeviceRegistryProperty", MISSING);
    return std::nullopt;
}

/// Empty when it cannot be read.
std::string InstanceOf(Reading& reading, HDEVINFO set, SP_DEVINFO_DATA& device)
{
    wchar_t instance[MAX_DEVICE_ID_LEN + 1] = {};
    if (::SetupDiGetDeviceInstanceIdW(set, &device, instance, MAX_DEVICE_ID_LEN, nullptr))
        return ToUtf8(std::wstring_view(instance));
    reading.Report(::GetLastError(), "SetupDiGetDeviceInstanceId", MISSING);
    return {};
}

/// A device that the tree of running ones lacks was in the machine once.
void ReadStatus(Reading& reading, const SP_DEVINFO_DATA& data, Device& device)
{
    ULONG status = 0;
    ULONG problem = 0;
    const CONFIGRET result = ::CM_Get_DevNode_Status(&status, &problem, data.DevInst, 0);
    if (result == CR_SUCCESS || result == CR_NO_SUCH_DEVNODE)
        device.present = result == CR_SUCCESS;
    else
        reading.Report(ERROR_GEN_FAILURE, "CM_Get_DevNode_Status",
                       "The state of device " + device.instance + " is not known (result " + std::to_string(result) +
                           " of the configuration manager).");
    if (result == CR_SUCCESS && (status & DN_HAS_PROBLEM) != 0)
        device.problem = DeviceProblem{problem, DeviceProblemText(problem)};
}

/// The last part of "{class GUID}\0007", the name of the device's driver key; empty for a device without a driver.
std::string ClassSubkey(const std::string& driver)
{
    const std::size_t slash = driver.rfind('\\');
    return slash != std::string::npos ? driver.substr(slash + 1) : std::string();
}

void AddDevice(Reading& reading, HDEVINFO set, SP_DEVINFO_DATA& data, Devices& devices)
{
    Device device;
    device.instance = InstanceOf(reading, set, data);
    device.description = Property(reading, set, data, SPDRP_DEVICEDESC).value_or("");
    ReadStatus(reading, data, device);
    const auto driver = Property(reading, set, data, SPDRP_DRIVER);
    if (!driver) // whose device it is, is not known
    {
        devices.readable = false;
        return;
    }
    const std::string subkey = ClassSubkey(*driver);
    if (!subkey.empty())
        devices.byClassKey.emplace(subkey, std::move(device));
    else if (device.present.value_or(false))
        devices.withoutDriver.push_back(std::move(device));
}

} // namespace

Devices ReadDevices(Reading& reading)
{
    Devices devices;
    const HDEVINFO set = ::SetupDiGetClassDevsW(&GUID_DEVCLASS_NET, nullptr, nullptr, 0);
    if (set == INVALID_HANDLE_VALUE)
    {
        reading.Report(::GetLastError(), "SetupDiGetClassDevs", MISSING);
        return devices;
    }
    const UniqueDeviceSet owner(set);
    devices.readable = true;
    SP_DEVINFO_DATA data = {};
    data.cbSize = sizeof(data);
    for (DWORD i = 0; ::SetupDiEnumDeviceInfo(set, i, &data); ++i)
        AddDevice(reading, set, data, devices);
    if (const DWORD code = ::GetLastError(); code != ERROR_NO_MORE_ITEMS)
    {
        devices.readable = false;
        reading.Report(code, "SetupDiEnumDeviceInfo", MISSING);
    }
    return devices;
}

std::optional<std::vector<std::string>> ReadLanDevices(Reading& reading)
{
    std::vector<std::wstring> names;
    const DWORD code = ReadSubkeys(LAN_DEVICES, names);
    if (code != ERROR_SUCCESS)
    {
        if (!IsMissingKey(code))
            reading.Report(code, ToUtf8(LAN_DEVICES), "Which adapters have a property sheet is not known.");
        return std::nullopt;
    }
    std::vector<std::string> instances;
    for (const std::wstring& name : names)
    {
        StoredKey key(LAN_DEVICES + (L'\\' + name), reading.machine.problems);
        if (const auto instance = key.Text(L"DeviceInstance"); instance.value)
            instances.push_back(ToLower(*instance.value));
    }
    std::ranges::sort(instances);
    return instances;
}

} // namespace zelk
