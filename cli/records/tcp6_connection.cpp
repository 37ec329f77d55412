#include "records/tcp6_connection.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <state/fields/item.h>
#include <zelk_nm/tolva.h>

#include "answer/failure.h"
#include "system/system_error.h"

namespace zelkctl
{
namespace
{

struct StateName
{
    int state;
    const char* pszName;
};
constexpr StateName STATE_NAMES[] = {{MIB_TCP_STATE_CLOSED, "CLOSED"},       {MIB_TCP_STATE_LISTEN, "LISTEN"},
                                     {MIB_TCP_STATE_SYN_SENT, "SYN_SENT"},   {MIB_TCP_STATE_SYN_RCVD, "SYN_RCVD"},
                                     {MIB_TCP_STATE_ESTAB, "ESTAB"},         {MIB_TCP_STATE_FIN_WAIT1, "FIN_WAIT1"},
                                     {MIB_TCP_STATE_FIN_WAIT2, "FIN_WAIT2"}, {MIB_TCP_STATE_CLOSE_WAIT, "CLOSE_WAIT"},
                                     {MIB_TCP_STATE_CLOSING, "CLOSING"},     {MIB_TCP_STATE_LAST_ACK, "LAST_ACK"},
                                     {MIB_TCP_STATE_TIME_WAIT, "TIME_WAIT"}, {MIB_TCP_STATE_DELETE_TCB, "DELETE_TCB"}};

std::string NameOfState(int state)
{
    const auto found = std::ranges::find(STATE_NAMES, state, &StateName::state);
    return found != std::end(STATE_NAMES) ? found->pszName : std::to_string(state);
}

zelk::IpAddress AddressOf(const IN6_ADDR& address)
{
    zelk::IpAddress::Ipv6Bytes bytes = {};
    std::ranges::copy(address.u.Byte, bytes.begin());
    return zelk::IpAddress(bytes);
}

/// The port is in network byte order, and the upper half of its number may hold anything.
std::uint16_t PortOf(DWORD dwPort)
{
    return static_cast<std::uint16_t>((dwPort & 0xFF) << 8 | (dwPort >> 8 & 0xFF));
}

Tcp6Connection ConnectionOf(const MIB_TCP6ROW& row)
{
    return {.localAddress = AddressOf(row.LocalAddr),
            .localPort = PortOf(row.dwLocalPort),
            .localScopeId = row.dwLocalScopeId,
            .remoteAddress = AddressOf(row.RemoteAddr),
            .remotePort = PortOf(row.dwRemotePort),
            .remoteScopeId = row.dwRemoteScopeId,
            .sState = NameOfState(static_cast<int>(row.State))};
}

/// Empty when there is no connection.
std::vector<std::byte> ReadTable()
{
    constexpr int MOST_ATTEMPTS = 8; // connections may come between two questions
    std::vector<std::byte> buffer;
    unsigned long ulSize = 0;
    unsigned long ulRc = TOLVA::GetTcp6Table(nullptr, ulSize, true);
    for (int i = 0; i < MOST_ATTEMPTS && ulRc == ERROR_INSUFFICIENT_BUFFER; ++i)
    {
        buffer.resize(ulSize);
        ulRc = TOLVA::GetTcp6Table(reinterpret_cast<MIB_TCP6TABLE*>(buffer.data()), ulSize, true);
    }
    if (ulRc != NO_ERROR)
        throw Failure({.sReason = SystemText(ulRc), .sOperation = "GetTcp6Table"});
    return buffer;
}

} // namespace

std::vector<Tcp6Connection> ReadTcp6Connections()
{
    std::vector<Tcp6Connection> connections;
    const auto buffer = ReadTable();
    if (buffer.empty())
        return connections;
    const auto* pTable = reinterpret_cast<const MIB_TCP6TABLE*>(buffer.data());
    std::transform(pTable->table, pTable->table + pTable->dwNumEntries, std::back_inserter(connections), ConnectionOf);
    return connections;
}

} // namespace zelkctl

namespace zelk
{
namespace
{

using zelkctl::Tcp6Connection;

constexpr Field<Tcp6Connection> TCP6_CONNECTION[] = {
    Item<Tcp6Connection, &Tcp6Connection::localAddress>("localAddress", "Local address", "Address of this machine."),
    Item<Tcp6Connection, &Tcp6Connection::localPort>("localPort", "Port", "Port of this machine."),
    Item<Tcp6Connection, &Tcp6Connection::localScopeId>("localScopeId", "Scope", "Zone of the local address."),
    Item<Tcp6Connection, &Tcp6Connection::remoteAddress>("remoteAddress", "Remote address",
                                                         "Address of the other machine."),
    Item<Tcp6Connection, &Tcp6Connection::remotePort>("remotePort", "Port", "Port of the other machine."),
    Item<Tcp6Connection, &Tcp6Connection::remoteScopeId>("remoteScopeId", "Scope", "Zone of the remote address."),
    Item<Tcp6Connection, &Tcp6Connection::sState>("state", "State", "State of the connection."),
};

} // namespace

template <>
FieldTable<Tcp6Connection> FieldsOf()
{
    return {"tcp6Connection", TCP6_CONNECTION};
}

} // namespace zelk
