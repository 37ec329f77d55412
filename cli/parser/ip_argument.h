#pragma once

#include <string>
#include <vector>

#include <zelk_nm/ip_address.h>

namespace zelkctl
{

struct Network
{
    velmor::ip_address address;
    unsigned char prefixLength;
};

// What the user wrote for the argument `sName`. They throw the Failure of a wrong use for any other text.

/// An address alone, IPv4 in four decimal parts: the library would take a port or a scope and forget it.
velmor::ip_address ParseAddress(const std::string& sName, const std::string& sText);

/// An address, "/" and the prefix length.
Network ParseNetwork(const std::string& sName, const std::string& sText);

// Several addresses of machines, none twice.

std::vector<velmor::ip_address> ParseAddresses(const std::string& sName, const std::vector<std::string>& texts);
std::vector<Network> ParseNetworks(const std::string& sName, const std::vector<std::string>& texts);

} // namespace zelkctl
