#include <state/reading/class_key.h>

#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/speed_setting.h>
#include <state/reading/stored_key.h>
#include <state/values/registry_data.h>

namespace zelk
{
namespace
{

// Of "Characteristics".
constexpr std::uint32_t IS_VIRTUAL = 0x01;
constexpr std::uint32_t IS_SOFTWARE = 0x02;
constexpr std::uint32_t IS_PHYSICAL = 0x04;
constexpr std::uint32_t IS_HIDDEN = 0x08;

std::optional<std::string> DriverDate(StoredKey& key)
{
    const auto text = key.Text(L"DriverDate");
    if (!text.value)
        return std::nullopt;
    auto date = IsoDate(*text.value);
    return date ? date : key.Refuse<std::string>(L"DriverDate", "is not a date").value;
}

/// An empty text means what a missing value means: the driver's own address.
std::optional<HardwareAddress> SetAddress(StoredKey& key)
{
    const auto text = key.Text(L"NetworkAddress");
    if (text.value.value_or("").empty())
        return std::nullopt;
    auto address = HardwareAddress::Parse(*text.value);
    return address ? address : key.Refuse<HardwareAddress>(L"NetworkAddress", "is not a hardware address").value;
}

std::optional<AdapterKind> KindOf(std::uint32_t characteristics)
{
    if ((characteristics & IS_PHYSICAL) != 0)
        return AdapterKind::PHYSICAL;
    if ((characteristics & (IS_VIRTUAL | IS_SOFTWARE)) != 0)
        return AdapterKind::VIRTUAL;
    return std::nullopt;
}

void Complete(Adapter& adapter, StoredKey& key, const std::wstring& subkey)
{
    adapter.classKey = ToUtf8(subkey);
    adapter.deviceInstance = key.Text(L"DeviceInstanceID").value;
    adapter.driver.description = key.Text(L"DriverDesc").value;
    adapter.driver.provider = key.Text(L"ProviderName").value;
    adapter.driver.version = key.Text(L"DriverVersion").value;
    adapter.driver.date = DriverDate(key);
    adapter.driver.hardwareAddress = SetAddress(key);
    if (!adapter.description)
        adapter.description = adapter.driver.description;
    const auto characteristics = key.Number(L"Characteristics").value.value_or(0);
    adapter.hidden = adapter.hidden || (characteristics & IS_HIDDEN) != 0;
    if (!adapter.kind)
        adapter.kind = KindOf(characteristics);
}

/// Other keys stand beside those of adapters, and some may not be opened by everybody.
bool IsAdapterKey(const std::wstring& name)
{
    return name.find_first_not_of(L"0123456789") == std::wstring::npos;
}

void ReadSubkey(Reading& reading, const std::wstring& subkey)
{
    const std::wstring path = CLASS_KEY + (L'\\' + subkey);
    std::vector<Problem> problems;
    StoredKey key(path, problems);
    const auto text = key.Text(L"NetCfgInstanceId");
    const auto guid = Guid::Parse(text.value.value_or(""));
    if (!guid)
    {
        // Reported for the machine: nobody can tell of which adapter.
        reading.machine.problems.insert(reading.machine.problems.end(), problems.begin(), problems.end());
        return;
    }
    Adapter* adapter = reading.Find(*guid);
    if (adapter != nullptr && adapter->classKey)
        return; // left behind by a device that is gone; the first one counts
    if (adapter == nullptr)
    {
        Adapter installed;
        installed.guid = guid;
        adapter = &reading.Add(std::move(installed));
    }
    Complete(*adapter, key, subkey);
    adapter->driver.speedDuplex = ReadSpeedSetting(key, path, problems);
    adapter->problems.insert(adapter->problems.end(), problems.begin(), problems.end());
}

} // namespace

bool ReadClassKey(Reading& reading)
{
    std::vector<std::wstring> subkeys;
    const DWORD code = ReadSubkeys(CLASS_KEY, subkeys);
    for (const std::wstring& subkey : subkeys)
        if (IsAdapterKey(subkey))
            ReadSubkey(reading, subkey);
    if (code == ERROR_SUCCESS || IsMissingKey(code))
        return true;
    reading.Report(code, ToUtf8(CLASS_KEY), "Drivers, and adapters that do not run, are not known.");
    return false;
}

} // namespace zelk
