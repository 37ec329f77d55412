#include <state/reading/conclusions.h>

#include <state/reading/device_problems.h>

namespace zelk
{
namespace
{

bool IsDisabled(const Adapter& adapter)
{
    return adapter.deviceProblem && adapter.deviceProblem->code == PROBLEM_DISABLED;
}

void Join(Adapter& adapter, const Device& device)
{
    if (!device.instance.empty())
        adapter.deviceInstance = device.instance;
    adapter.present = device.present;
    adapter.deviceProblem = device.problem;
    if (!adapter.description && !device.description.empty())
        adapter.description = device.description;
}

/// A device's problem tells more than the state of its interface.
AdapterStatus Conclude(const Adapter& adapter)
{
    if (IsDisabled(adapter))
        return AdapterStatus::DISABLED;
    if (adapter.deviceProblem)
        return AdapterStatus::FAILED;
    if (adapter.present == false)
        return AdapterStatus::NOT_PRESENT;
    return adapter.status;
}

/// What does not run uses nothing.
void MarkAsUnused(Adapter& adapter)
{
    for (const Family family : FAMILIES)
    {
        IpSettings& settings = adapter.Of(family);
        settings.enabled = false;
        settings.addresses.emplace();
        settings.gateways.emplace();
        settings.dnsServers.emplace();
    }
}

void Conclude(Adapter& adapter, const Devices& devices, bool tableRead)
{
    const bool running = adapter.index.has_value() && adapter.status != AdapterStatus::NOT_PRESENT;
    const auto device = adapter.classKey ? devices.byClassKey.find(*adapter.classKey) : devices.byClassKey.end();
    if (device != devices.byClassKey.end())
        Join(adapter, device->second);
    if (running)
        adapter.present = true;
    else if (tableRead && devices.readable && device == devices.byClassKey.end())
        adapter.present = false;
    if (adapter.present == true)
        adapter.enabled = !IsDisabled(adapter);
    adapter.status = Conclude(adapter);
    if (!running && tableRead)
        MarkAsUnused(adapter);
}

} // namespace

void AddDevices(Reading& reading, const Devices& devices, bool tableRead)
{
    for (Adapter& adapter : reading.machine.adapters)
        Conclude(adapter, devices, tableRead);
    for (const Device& device : devices.withoutDriver)
    {
        Adapter adapter;
        Join(adapter, device);
        adapter.enabled = !IsDisabled(adapter);
        adapter.status = Conclude(adapter);
        MarkAsUnused(adapter);
        reading.Add(std::move(adapter));
    }
}

} // namespace zelk
