#include <state/reading/mask_table.h>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <windows.h>

#include <state/platform/socket_address.h>
#include <state/platform/table_buffer.h>

namespace zelk
{

MaskTable ReadMaskTable(Reading& reading)
{
    TableBuffer buffer(64 * sizeof(MIB_IPADDRROW));
    const DWORD code = buffer.Fill(ERROR_INSUFFICIENT_BUFFER, [](void* table, ULONG& size) {
        return ::GetIpAddrTable(static_cast<MIB_IPADDRTABLE*>(table), &size, FALSE);
    });
    MaskTable masks;
    if (code != NO_ERROR && code != ERROR_NO_DATA)
        reading.Report(code, "GetIpAddrTable", "Prefix lengths of IPv4 addresses may not be known.");
    if (code != NO_ERROR)
        return masks;
    const auto* const table = buffer.As<MIB_IPADDRTABLE>();
    for (const MIB_IPADDRROW& row : buffer.Rows(table->table, table->dwNumEntries))
        if (const auto length = PrefixLengthOfMask(FromNetworkOrder(row.dwMask)))
            masks.emplace(std::pair(row.dwIndex, FromNetworkOrder(row.dwAddr)), *length);
    return masks;
}

} // namespace zelk
