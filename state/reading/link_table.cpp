#include <state/reading/link_table.h>

#include <limits>

#include <state/platform/mib_table.h>
#include <state/platform/table_buffer.h>
#include <state/reading/reading.h>

namespace zelk
{
namespace
{

constexpr const char* MISSING = "Whether cables are connected, and which adapters are hardware, is not known.";

/// The platform says 0 or all ones for a speed that it does not know.
template <class Number>
std::optional<std::uint64_t> SpeedOf(Number speed)
{
    const bool known = speed != 0 && speed != std::numeric_limits<Number>::max();
    return known ? std::optional<std::uint64_t>(speed) : std::nullopt;
}

std::optional<bool> IsConnected(NET_IF_MEDIA_CONNECT_STATE state)
{
    if (state == MediaConnectStateUnknown)
        return std::nullopt;
    return state == MediaConnectStateConnected;
}

Link LinkOf(const MIB_IF_ROW2& row)
{
    return {.filter = row.InterfaceAndOperStatusFlags.FilterInterface != 0,
            .kind =
                row.InterfaceAndOperStatusFlags.HardwareInterface != 0 ? AdapterKind::PHYSICAL : AdapterKind::VIRTUAL,
            .mediaConnected = IsConnected(row.MediaConnectState),
            .transmitSpeed = SpeedOf(row.TransmitLinkSpeed),
            .receiveSpeed = SpeedOf(row.ReceiveLinkSpeed)};
}

/// The older table knows neither filters nor what is hardware.
Link LinkOf(const MIB_IFROW& row)
{
    Link link;
    link.transmitSpeed = link.receiveSpeed = SpeedOf(row.dwSpeed);
    if (row.dwOperStatus == MIB_IF_OPER_STATUS_DISCONNECTED)
        link.mediaConnected = false;
    else if (row.dwOperStatus >= MIB_IF_OPER_STATUS_CONNECTED)
        link.mediaConnected = true;
    return link;
}

LinkTable ReadNewTable(Reading& reading, decltype(::GetIfTable2)& getIfTable2)
{
    MibTable<MIB_IF_TABLE2> table;
    if (const DWORD code = table.Read(getIfTable2); code != NO_ERROR)
        reading.Report(code, "GetIfTable2", MISSING);
    LinkTable links;
    for (const MIB_IF_ROW2& row : table.Rows())
        links.emplace(row.InterfaceIndex, LinkOf(row));
    return links;
}

LinkTable ReadOldTable(Reading& reading)
{
    TableBuffer buffer(16 * sizeof(MIB_IFROW));
    const DWORD code = buffer.Fill(ERROR_INSUFFICIENT_BUFFER, [](void* table, ULONG& size) {
        return ::GetIfTable(static_cast<MIB_IFTABLE*>(table), &size, FALSE);
    });
    LinkTable links;
    if (code != NO_ERROR && code != ERROR_NO_DATA)
        reading.Report(code, "GetIfTable", MISSING);
    if (code != NO_ERROR)
        return links;
    const auto* const table = buffer.As<MIB_IFTABLE>();
    for (const MIB_IFROW& row : buffer.Rows(table->table, table->dwNumEntries))
        links.emplace(row.dwIndex, LinkOf(row));
    return links;
}

} // namespace

LinkTable ReadLinkTable(Reading& reading)
{
    auto* const getIfTable2 =
        reading.IsVistaOrLater() ? FindFunction<decltype(::GetIfTable2)>(L"iphlpapi.dll", "GetIfTable2") : nullptr;
    return getIfTable2 != nullptr ? ReadNewTable(reading, *getIfTable2) : ReadOldTable(reading);
}

} // namespace zelk
