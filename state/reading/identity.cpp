#include <state/reading/identity.h>

#include <algorithm>
#include <memory>

#include <winsock2.h>

#include <windows.h>

#include <dsrole.h>

#include <state/platform/handles.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

/// One of the names that the system has of the machine.
struct NameQuery
{
    COMPUTER_NAME_FORMAT format;
    std::optional<std::string> Identity::*name;
    const char* missing;
};

constexpr NameQuery NAMES[] = {
    {ComputerNameDnsHostname, &Identity::computerName, "The computer name is not known."},
    {ComputerNameDnsDomain, &Identity::primaryDnsSuffix, "The primary DNS suffix is not known."},
    {ComputerNameDnsFullyQualified, &Identity::fullComputerName, "The full computer name is not known."},
    {ComputerNameNetBIOS, &Identity::netbiosName, "The NetBIOS name is not known."}};

/// Names can be changed while they are asked for.
DWORD AskName(COMPUTER_NAME_FORMAT format, std::wstring& name)
{
    constexpr int MOST_TRIES = 8;
    name.resize(256);
    for (int i = 0; i < MOST_TRIES; ++i)
    {
        auto size = static_cast<DWORD>(name.size());
        if (::GetComputerNameExW(format, name.data(), &size))
        {
            name.resize(size);
            return NO_ERROR;
        }
        if (const DWORD code = ::GetLastError(); code != ERROR_MORE_DATA)
            return code;
        name.resize(std::max<std::size_t>(size, 2 * name.size()));
    }
    return ERROR_MORE_DATA;
}

void ReadNames(Reading& reading)
{
    for (const NameQuery& query : NAMES)
    {
        std::wstring name;
        if (const DWORD code = AskName(query.format, name); code == NO_ERROR)
            reading.machine.identity.*query.name = ToUtf8(name);
        else
            reading.Report(code, "GetComputerNameEx", query.missing);
    }
}

using Role = DSROLE_PRIMARY_DOMAIN_INFO_BASIC;
using UniqueRole = std::unique_ptr<Role, Release<::DsRoleFreeMemory>>;

Membership MembershipOf(DSROLE_MACHINE_ROLE role)
{
    switch (role)
    {
    case DsRole_RoleStandaloneWorkstation:
    case DsRole_RoleStandaloneServer: return Membership::WORKGROUP;
    case DsRole_RoleBackupDomainController:
    case DsRole_RolePrimaryDomainController: return Membership::DOMAIN_CONTROLLER;
    default: return Membership::DOMAIN_MEMBER;
    }
}

std::optional<std::string> FirstOf(const wchar_t* name, const wchar_t* otherwise)
{
    for (const wchar_t* const text : {name, otherwise})
        if (text != nullptr && *text != L'\0')
            return ToUtf8(std::wstring_view(text));
    return std::nullopt;
}

void ReadMembership(Reading& reading)
{
    BYTE* information = nullptr;
    const DWORD code = ::DsRoleGetPrimaryDomainInformation(nullptr, DsRolePrimaryDomainInfoBasic, &information);
    const UniqueRole role(code == NO_ERROR ? reinterpret_cast<Role*>(information) : nullptr);
    if (!role)
    {
        reading.Report(code, "DsRoleGetPrimaryDomainInformation", "Workgroup and domain are not known.");
        return;
    }
    Identity& identity = reading.machine.identity;
    identity.membership = MembershipOf(role->MachineRole);
    if (identity.membership == Membership::WORKGROUP)
        identity.workgroup = FirstOf(role->DomainNameFlat, nullptr);
    else
        identity.domain = FirstOf(role->DomainNameDns, role->DomainNameFlat);
}

} // namespace

void ReadIdentity(Reading& reading, StoredKey& parameters)
{
    ReadNames(reading);
    ReadMembership(reading);
    ConfiguredIdentity& configured = reading.machine.identity.configured;
    configured.computerName = parameters.Text(L"NV Hostname").value;
    configured.primaryDnsSuffix = parameters.Text(L"NV Domain").Or({});
    StoredKey computerName(COMPUTER_NAME, reading.machine.problems);
    configured.netbiosName = computerName.Text(L"ComputerName").value;
}

} // namespace zelk
