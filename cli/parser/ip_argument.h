#pragma once

#include <string>
#include <vector>

#include <state/values/ip_prefix.h>
#include <zelk_nm/ip_address.h>

namespace zelkctl
{

// What the user gave for the argument `sName`. Each throws a usage error for any other text.

/// An address alone, IPv4 in four decimal parts.
zelk::IpAddress ParseAddress(const std::string& sName, const std::string& sText);

/// An address, "/" and the prefix length.
zelk::IpPrefix ParseNetwork(const std::string& sName, const std::string& sText);

// Several addresses of machines, none twice.
std::vector<zelk::IpAddress> ParseAddresses(const std::string& sName, const std::vector<std::string>& texts);
std::vector<zelk::IpPrefix> ParseNetworks(const std::string& sName, const std::vector<std::string>& texts);

/// As the library takes it.
velmor::ip_address ToVelmor(const zelk::IpAddress& address);

} // namespace zelkctl
