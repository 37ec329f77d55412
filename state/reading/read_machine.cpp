#include <state/reading/read_machine.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include <state/platform/registry_keys.h>
#include <state/reading/adapter_settings.h>
#include <state/reading/adapter_table.h>
#include <state/reading/class_key.h>
#include <state/reading/conclusions.h>
#include <state/reading/devices.h>
#include <state/reading/environment.h>
#include <state/reading/identity.h>
#include <state/reading/interface_tables.h>
#include <state/reading/link_table.h>
#include <state/reading/reading.h>
#include <state/reading/route_tables.h>
#include <state/reading/stored_key.h>

namespace zelk
{
namespace
{

/// Everything that runs, and everything that is installed. Returns the families whose interfaces could not be read.
std::set<Family> ReadAdapters(Reading& reading, const ReadOptions& options)
{
    const LinkTable links = ReadLinkTable(reading);
    const bool tableRead = ReadAdapterTable(reading, links);
    std::set<Family> unread(std::begin(FAMILIES), std::end(FAMILIES));
    if (tableRead)
        unread = ReadInterfaceTables(reading);
    const bool classRead = ReadClassKey(reading);
    if (!tableRead && !classRead)
        throw StateError(MakeProblem(reading.machine.problems.back().code, "ReadMachine",
                                     "Neither the adapters that run nor those that are installed can be read."));
    AddDevices(reading, ReadDevices(reading), tableRead);
    if (tableRead && options.routes)
        ReadRouteTables(reading);
    return unread;
}

void ReadPropertySheets(Reading& reading)
{
    const auto devices = ReadLanDevices(reading);
    if (!devices)
        return;
    for (Adapter& adapter : reading.machine.adapters)
        if (adapter.deviceInstance)
            adapter.canChangeOptions = std::ranges::binary_search(*devices, ToLower(*adapter.deviceInstance));
}

std::optional<bool> Autoconfiguration(StoredKey& parameters)
{
    const auto setting = parameters.Number(L"IPAutoconfigurationEnabled");
    if (setting.value)
        return *setting.value != 0;
    const bool known = setting.readable || parameters.IsMissing();
    return known ? std::optional(true) : std::nullopt;
}

} // namespace

Machine ReadMachine(const ReadOptions& options)
{
    Reading reading(GetSystemVersion());
    ReadEnvironment(reading);
    const std::set<Family> unread = ReadAdapters(reading, options);
    StoredKey parameters(TCPIP_PARAMETERS, reading.machine.problems);
    const MachineSettings settings = {Autoconfiguration(parameters), unread};
    for (Adapter& adapter : reading.machine.adapters)
        ReadAdapterSettings(adapter, settings, reading.IsVistaOrLater());
    ReadPropertySheets(reading);
    if (options.routes)
        ReadPersistentRoutes(reading);
    if (options.identity)
        ReadIdentity(reading, parameters);
    return std::move(reading.machine);
}

} // namespace zelk
