#include <support/platform/handles.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

#include <dsrole.h>
#include <lm.h>
#include <ntsecapi.h>

namespace
{

struct FreeRoleInformation
{
    void operator()(void* pInformation) const noexcept { ::DsRoleFreeMemory(pInformation); }
};
using UniqueRoleInformation = velmor::UniqueHandle<BYTE*, FreeRoleInformation>;

struct ClosePolicy
{
    void operator()(LSA_HANDLE hPolicy) const noexcept { ::LsaClose(hPolicy); }
};
using UniquePolicy = velmor::UniqueHandle<LSA_HANDLE, ClosePolicy>;

struct RoleText
{
    DSROLE_MACHINE_ROLE role;
    const char* pszText;
};
constexpr RoleText ROLE_TEXTS[] = {
    {DsRole_RoleMemberWorkstation, "MachineRole=DsRole_RoleMemberWorkstation"},
    {DsRole_RoleMemberServer, "MachineRole=DsRole_RoleMemberServer"},
    {DsRole_RoleBackupDomainController, "MachineRole=DsRole_RoleBackupDomainController"},
    {DsRole_RolePrimaryDomainController, "MachineRole=DsRole_RolePrimaryDomainController"}};

/// Of a domain's machine: its flat name is then the domain's.
void TraceRole(const CallFrame& frame, DSROLE_MACHINE_ROLE role)
{
    if (role == DsRole_RoleStandaloneWorkstation || role == DsRole_RoleStandaloneServer)
        return;
    frame.Verbose("MachineRole is not standalone server/workstation");
    for (const RoleText& row : ROLE_TEXTS)
        if (row.role == role)
            return frame.Verbose(row.pszText);
    frame.Verbose("pDsRole->MachineRole", role);
}

/// The lengths are 16 bits of bytes. A name that they cannot hold must not wrap around.
constexpr std::size_t LONGEST_NAME = 0xFFFF / sizeof(wchar_t) - 1;

LSA_UNICODE_STRING PolicyText(const velmor::string& sText) noexcept
{
    LSA_UNICODE_STRING text = {};
    text.Length = static_cast<USHORT>(sText.size() * sizeof(wchar_t));
    text.MaximumLength = static_cast<USHORT>((sText.size() + 1) * sizeof(wchar_t));
    text.Buffer = const_cast<wchar_t*>(sText.c_str()); // the platform only reads it
    return text;
}

} // namespace

bool TOLVA::GetWorkgroupName(velmor::string& sWorkgroupName)
{
    return RunOperation("TOLVA::GetWorkgroupName", [&](const CallFrame& frame) {
        // The flat name is the workgroup's on a standalone machine and the domain's short name on a member.
        UniqueRoleInformation information;
        const DWORD dwRc =
            ::DsRoleGetPrimaryDomainInformation(nullptr, DsRolePrimaryDomainInfoBasic, information.Receive());
        if (dwRc != NO_ERROR)
            return frame.Fail("DsRoleGetPrimaryDomainInformation failed", "dwRc", dwRc);
        const auto* pDsRole = reinterpret_cast<const DSROLE_PRIMARY_DOMAIN_INFO_BASIC*>(information.Get());
        sWorkgroupName = pDsRole->DomainNameFlat;
        frame.Verbose("sWorkgroupName", sWorkgroupName);
        frame.Verbose("dwSize", sWorkgroupName.size());
        TraceRole(frame, pDsRole->MachineRole);
        return frame.Succeed();
    });
}

bool TOLVA::SetWorkgroupName(const velmor::string& sWorkgroupName)
{
    return RunOperation("TOLVA::SetWorkgroupName", [&](const CallFrame& frame) {
        if (sWorkgroupName.empty())
            return frame.Fail("empty string parameter");
        frame.Verbose("sWorkgroupName", sWorkgroupName);
        if (sWorkgroupName.size() > LONGEST_NAME)
            return frame.Fail("workgroup name too long");

        LSA_OBJECT_ATTRIBUTES attributes = {};
        UniquePolicy policy;
        ULONG ulRc =
            ::LsaNtStatusToWinError(::LsaOpenPolicy(nullptr, &attributes, POLICY_ALL_ACCESS, policy.Receive()));
        if (ulRc != NO_ERROR)
            return frame.Fail("LsaOpenPolicy failed", "ulRc", ulRc);

        // Without a domain's SID, which stays null, the name is that of a workgroup.
        POLICY_PRIMARY_DOMAIN_INFO domain = {};
        domain.Name = PolicyText(sWorkgroupName);
        ulRc =
            ::LsaNtStatusToWinError(::LsaSetInformationPolicy(policy.Get(), PolicyPrimaryDomainInformation, &domain));
        const bool bSet = ulRc == NO_ERROR;
        if (!bSet)
            frame.Error("LsaSetInformationPolicy failed", "ulRc", ulRc);
        // Closed here and not by its owner, because a failure of it is to be told.
        ulRc = ::LsaNtStatusToWinError(::LsaClose(policy.Release()));
        if (ulRc != NO_ERROR)
            return frame.Fail("LsaClose failed", "ulRc", ulRc);
        return bSet ? frame.Succeed() : frame.Fail("Failed");
    });
}
