#include "records/tcp6_record.h"

#include "answer/json_value.h"
#include "answer/word.h"

namespace zelkctl
{
namespace
{

constexpr Field FIELDS[] = {{"localAddress", "Local address"},
                            {"localPort", "Port"},
                            {"localScopeId", "Scope"},
                            {"remoteAddress", "Remote address"},
                            {"remotePort", "Port"},
                            {"remoteScopeId", "Scope"},
                            {"state", "State"}};

constexpr Word STATES[] = {{MIB_TCP_STATE_CLOSED, "CLOSED"},       {MIB_TCP_STATE_LISTEN, "LISTEN"},
                           {MIB_TCP_STATE_SYN_SENT, "SYN_SENT"},   {MIB_TCP_STATE_SYN_RCVD, "SYN_RCVD"},
                           {MIB_TCP_STATE_ESTAB, "ESTAB"},         {MIB_TCP_STATE_FIN_WAIT1, "FIN_WAIT1"},
                           {MIB_TCP_STATE_FIN_WAIT2, "FIN_WAIT2"}, {MIB_TCP_STATE_CLOSE_WAIT, "CLOSE_WAIT"},
                           {MIB_TCP_STATE_CLOSING, "CLOSING"},     {MIB_TCP_STATE_LAST_ACK, "LAST_ACK"},
                           {MIB_TCP_STATE_TIME_WAIT, "TIME_WAIT"}, {MIB_TCP_STATE_DELETE_TCB, "DELETE_TCB"}};

Json AddressOf(const IN6_ADDR& address)
{
    SOCKADDR_IN6 sa = {};
    sa.sin6_family = AF_INET6;
    sa.sin6_addr = address;
    return AddressOrNull(velmor::ip_address(sa));
}

/// The port is in network byte order, and the upper half of its number may hold anything.
unsigned int PortOf(DWORD dwPort)
{
    return (dwPort & 0xFF) << 8 | (dwPort >> 8 & 0xFF);
}

} // namespace

Json RecordOf(const MIB_TCP6ROW& connection)
{
    Json record;
    record["localAddress"] = AddressOf(connection.LocalAddr);
    record["localPort"] = PortOf(connection.dwLocalPort);
    record["localScopeId"] = connection.dwLocalScopeId;
    record["remoteAddress"] = AddressOf(connection.RemoteAddr);
    record["remotePort"] = PortOf(connection.dwRemotePort);
    record["remoteScopeId"] = connection.dwRemoteScopeId;
    record["state"] = WordOf(STATES, static_cast<unsigned long>(connection.State));
    return record;
}

std::span<const Field> Tcp6Fields()
{
    return FIELDS;
}

} // namespace zelkctl
