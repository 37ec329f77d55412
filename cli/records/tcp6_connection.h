#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <state/fields/field.h>
#include <state/values/ip_address.h>

namespace zelkctl
{

/// A TCP connection over IPv6, or a port that waits for one.
struct Tcp6Connection
{
    zelk::IpAddress localAddress;
    std::uint16_t localPort;
    std::uint32_t localScopeId;
    zelk::IpAddress remoteAddress;
    std::uint16_t remotePort;
    std::uint32_t remoteScopeId;
    std::string sState;
};

/// All of them, in the platform's order. Throws Failure with the platform's code.
std::vector<Tcp6Connection> ReadTcp6Connections();

} // namespace zelkctl

namespace zelk
{

template <>
FieldTable<zelkctl::Tcp6Connection> FieldsOf();

} // namespace zelk
