#include <state/reading/interface_tables.h>

#include <state/platform/mib_table.h>
#include <state/platform/socket_address.h>

namespace zelk
{
namespace
{

/// False when the table cannot be read.
bool Read(Reading& reading, Family family, decltype(::GetIpInterfaceTable)& getTable)
{
    MibTable<MIB_IPINTERFACE_TABLE> table;
    const DWORD code = table.Read([&](auto** rows) { return getTable(PlatformFamily(family), rows); });
    const bool none = code == ERROR_NOT_SUPPORTED || code == ERROR_NOT_FOUND; // the family is not installed
    if (code != NO_ERROR && !none)
    {
        reading.Report(code, "GetIpInterfaceTable",
                       std::string("The metrics of interfaces for ") + FamilyName(family) + " are not known.");
        for (Adapter& adapter : reading.machine.adapters)
            adapter.Of(family).mtu.reset(); // the link's may be greater
        return false;
    }
    for (const MIB_IPINTERFACE_ROW& row : table.Rows())
    {
        Adapter* const adapter = reading.Find(family, row.InterfaceIndex);
        if (adapter == nullptr)
            continue;
        IpSettings& settings = adapter->Of(family);
        settings.metric = row.Metric;
        settings.automaticMetric = row.UseAutomaticMetric != 0;
        settings.mtu = row.NlMtu;
    }
    return true;
}

} // namespace

std::set<Family> ReadInterfaceTables(Reading& reading)
{
    std::set<Family> unread;
    auto* const getTable = reading.IsVistaOrLater()
                               ? FindFunction<decltype(::GetIpInterfaceTable)>(L"iphlpapi.dll", "GetIpInterfaceTable")
                               : nullptr;
    if (getTable == nullptr)
        return unread;
    for (const Family family : FAMILIES)
        if (!Read(reading, family, *getTable))
            unread.insert(family);
    return unread;
}

} // namespace zelk
