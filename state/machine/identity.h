#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zelk
{

/// What the machine is a member of.
enum class Membership : std::uint8_t
{
    WORKGROUP,
    DOMAIN_MEMBER,
    DOMAIN_CONTROLLER
};

/// The names as the registry keeps them: what the machine will be called after its next start.
struct ConfiguredIdentity
{
    std::optional<std::string> computerName;     ///< "NV Hostname"
    std::optional<std::string> primaryDnsSuffix; ///< "NV Domain"; empty where none is set
    std::optional<std::string> netbiosName;      ///< "ComputerName" of Control\ComputerName\ComputerName

    bool operator==(const ConfiguredIdentity&) const = default;
};

/// The machine's names as they are in use.
struct Identity
{
    std::optional<std::string> computerName;     ///< DNS host name, without a suffix (GetComputerNameEx)
    std::optional<std::string> primaryDnsSuffix; ///< DNS domain; empty where it has none
    std::optional<std::string> fullComputerName; ///< both, joined by a dot
    std::optional<std::string> netbiosName;      ///< at most 15 characters, upper case
    std::optional<Membership> membership;        ///< DsRoleGetPrimaryDomainInformation
    std::optional<std::string> workgroup;        ///< its name; absent for a member of a domain
    std::optional<std::string> domain; ///< DNS name of the domain or else its short one; absent in a workgroup
    ConfiguredIdentity configured;

    bool operator==(const Identity&) const = default;
};

} // namespace zelk
