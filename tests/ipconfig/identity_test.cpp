#include "ipconfig_test.h"

#include <algorithm>
#include <functional>

#include <dsrole.h>
#include <ntsecapi.h>

using namespace testing_support;

namespace
{

constexpr const wchar_t* PARAMETERS = L"SYSTEM\\CurrentControlSet\\services\\Tcpip\\Parameters";

class Identity : public IpconfigTest
{
protected:
    ~Identity() override
    {
        for (std::size_t i = 0; i < std::size(VALUES); ++i)
            if (m_before[i] == MISSING)
                ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, PARAMETERS, VALUES[i]);
            else
                m_key.Set(L"", VALUES[i], m_before[i]);
    }

    static constexpr const wchar_t* VALUES[] = {L"Hostname", L"NV Hostname", L"Domain", L"NV Domain"};
    const RegistryKeyScope m_key{PARAMETERS};
    const RegistryData m_before[4] = {m_key.Get(L"", VALUES[0]), m_key.Get(L"", VALUES[1]), m_key.Get(L"", VALUES[2]),
                                      m_key.Get(L"", VALUES[3])};
};

TEST_F(Identity, NamesOfEveryLength)
{
    std::wstring sName;
    COMPUTER_NAME_FORMAT asked = {};
    DWORD codes[2] = {}; // forced errors of the first call and of the second
    const auto patch =
        PATCH_IMPORT(GetComputerNameExW, [&](COMPUTER_NAME_FORMAT format, wchar_t* pszName, DWORD* pdwSize) -> BOOL {
            asked = format;
            const DWORD dwForced = codes[pszName != nullptr];
            const DWORD dwGiven = std::exchange(*pdwSize, static_cast<DWORD>(sName.size() + 1));
            ::SetLastError(dwForced != 0 ? dwForced : ERROR_MORE_DATA);
            if (dwForced != 0 || pszName == nullptr || dwGiven <= sName.size())
                return FALSE;
            std::copy_n(sName.c_str(), sName.size() + 1, pszName);
            *pdwSize = static_cast<DWORD>(sName.size());
            return TRUE;
        });
    const struct
    {
        bool (*get)(velmor::string&);
        COMPUTER_NAME_FORMAT format;
        std::string sOperation, sVariable, sFailed;
    } rows[] = {{&TOLVA::GetComputerNameW, ComputerNameDnsHostname, "TOLVA::GetComputerNameW", "sComputerName",
                 "GetComputerNameExW"},
                {&TOLVA::GetPrimaryDnsSuffix, ComputerNameDnsDomain, "TOLVA::GetPrimaryDnsSuffix", "sPrimaryDnsSuffix",
                 "GetComputerNameEx"},
                {&TOLVA::GetFullComputerName, ComputerNameDnsFullyQualified, "TOLVA::GetFullComputerName",
                 "sFullComputerName", "GetComputerNameEx"}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.sOperation);
        for (const std::size_t length : {0U, 1U, 15U, 16U, 63U, 253U, 254U})
        {
            sName = std::wstring(length, L'\x65E5') + (length == 15 ? L"\xD83D\xDE00" : L"");
            velmor::string sFound = L"old";
            EXPECT_TRUE(row.get(sFound));
            EXPECT_EQ(sName, Text(sFound));
            EXPECT_EQ(row.format, asked);
        }
        sName = L"zelk-1";
        trace.Empty();
        velmor::string sFound;
        EXPECT_TRUE(row.get(sFound));
        trace.ExpectLines({"[V] " + row.sOperation + " : starting ...",
                           "[V] " + row.sOperation + " : " + row.sVariable + " = \"zelk-1\"",
                           "[V] " + row.sOperation + " : ... ending"});
        for (DWORD& dwCode : codes)
        {
            dwCode = ERROR_INVALID_PARAMETER;
            trace.Empty();
            EXPECT_FALSE(row.get(sFound));
            EXPECT_EQ("[E] ... ending( " + row.sFailed + " failed ) : dwLastError = 87", Said(row.sOperation));
            dwCode = 0;
        }
        EXPECT_EQ(L"zelk-1", Text(sFound));
    }
}

TEST_F(Identity, NamesAreWrittenTwice)
{
    const RegistryData OLD = StringData(L"old");
    const struct
    {
        bool (*set)(const velmor::string&);
        std::string sOperation, sValue;
        const wchar_t* const* ppszValues;
    } operations[] = {{&TOLVA::SetComputerNameW, "TOLVA::SetComputerNameW", "Hostname", &VALUES[0]},
                      {&TOLVA::SetPrimaryDnsSuffix, "TOLVA::SetPrimaryDnsSuffix", "Domain", &VALUES[2]}};
    for (const auto& operation : operations)
        for (const wchar_t* pszName : {L"", L"zelk \x65E5\x672C"})
            for (const int iFail : {0, 1, 2})
            {
                SCOPED_TRACE(operation.sOperation + std::to_string(iFail));
                for (const wchar_t* pszValue : VALUES)
                    m_key.Set(L"", pszValue, OLD);
                Asked();
                iFailWrite = iFail;
                EXPECT_EQ(iFail == 0, operation.set(pszName));
                std::string sSaid = iFail == 0   ? "[V] ... ending"
                                    : iFail == 1 ? "[E] ... ending( Set '" + operation.sValue + "' failed )"
                                                 : "[E] ... ending( Set 'NV " + operation.sValue + "' failed )";
                if (*pszName == L'\0' && operation.sValue == "Domain")
                    sSaid.insert(0, "[W] Empty Primary DNS suffix; ");
                EXPECT_EQ(sSaid, Said(operation.sOperation));
                EXPECT_EQ(iFail == 1 ? OLD : StringData(pszName), m_key.Get(L"", operation.ppszValues[0]));
                EXPECT_EQ(iFail == 0 ? StringData(pszName) : OLD, m_key.Get(L"", operation.ppszValues[1]));
                EXPECT_EQ(OLD, m_key.Get(L"", VALUES[operation.ppszValues == &VALUES[0] ? 2 : 0]));
            }
}

TEST_F(Identity, WorkgroupIsRead)
{
    DSROLE_PRIMARY_DOMAIN_INFO_BASIC information = {};
    DWORD dwRc = 0;
    int iAllocated = 0;
    const auto get =
        PATCH_IMPORT(DsRoleGetPrimaryDomainInformation,
                     [&](const wchar_t* pszServer, DSROLE_PRIMARY_DOMAIN_INFO_LEVEL level, PBYTE* ppBuffer) {
                         EXPECT_EQ(nullptr, pszServer);
                         EXPECT_EQ(DsRolePrimaryDomainInfoBasic, level);
                         iAllocated += dwRc == 0 ? 1 : 0;
                         *ppBuffer = dwRc == 0 ? reinterpret_cast<PBYTE>(&information) : nullptr;
                         return dwRc;
                     });
    const auto release = PATCH_IMPORT(DsRoleFreeMemory, [&](void* pBuffer) {
        EXPECT_EQ(&information, pBuffer);
        --iAllocated;
        information.DomainNameFlat = nullptr;
    });
    const std::string NAME = "[V] TOLVA::GetWorkgroupName : ";
    const std::pair<int, std::string> rows[] = {{0, ""},
                                                {1, "MachineRole=DsRole_RoleMemberWorkstation"},
                                                {2, ""},
                                                {3, "MachineRole=DsRole_RoleMemberServer"},
                                                {4, "MachineRole=DsRole_RoleBackupDomainController"},
                                                {5, "MachineRole=DsRole_RolePrimaryDomainController"},
                                                {6, "pDsRole->MachineRole = 6"}};
    wchar_t name[] = L"ZELK\x65E5";
    velmor::string sWorkgroup;
    for (const auto& [role, sRole] : rows)
    {
        information.MachineRole = static_cast<DSROLE_MACHINE_ROLE>(role);
        information.DomainNameFlat = name;
        trace.Empty();
        EXPECT_TRUE(TOLVA::GetWorkgroupName(sWorkgroup));
        EXPECT_EQ(name, Text(sWorkgroup));
        std::vector<std::string> lines = {NAME + "starting ...", NAME + "sWorkgroupName = \"ZELK\xE6\x97\xA5\"",
                                          NAME + "dwSize = 5"};
        if (!sRole.empty())
            lines.insert(lines.end(), {NAME + "MachineRole is not standalone server/workstation", NAME + sRole});
        lines.push_back(NAME + "... ending");
        trace.ExpectLines(lines);
        EXPECT_EQ(0, iAllocated);
    }
    dwRc = ERROR_ACCESS_DENIED;
    trace.Empty();
    EXPECT_FALSE(TOLVA::GetWorkgroupName(sWorkgroup));
    EXPECT_EQ("[E] ... ending( DsRoleGetPrimaryDomainInformation failed ) : dwRc = 5", Said("TOLVA::GetWorkgroupName"));
    EXPECT_EQ(name, Text(sWorkgroup));
    dwRc = 0;
    EXPECT_TRUE(TOLVA::GetWorkgroupName(sWorkgroup)) << "a machine without a flat name";
    EXPECT_EQ(L"", Text(sWorkgroup));
    EXPECT_EQ(0, iAllocated);
}

TEST_F(Identity, WorkgroupIsSet)
{
    constexpr NTSTATUS DENIED = static_cast<NTSTATUS>(0xC0000022);
    int iPolicy = 0;
    NTSTATUS open = 0, set = 0, close = 0;
    std::string sCalls;
    std::wstring sWritten;
    const auto openPatch =
        PATCH_IMPORT(LsaOpenPolicy, [&](LSA_UNICODE_STRING* pSystem, LSA_OBJECT_ATTRIBUTES* pAttributes,
                                        ACCESS_MASK access, LSA_HANDLE* phPolicy) {
            const auto* pBytes = reinterpret_cast<const unsigned char*>(pAttributes);
            EXPECT_TRUE(std::all_of(pBytes, pBytes + sizeof(*pAttributes), [](unsigned char b) { return b == 0; }));
            EXPECT_EQ(nullptr, pSystem);
            EXPECT_EQ(0xF0FFFU, access);
            sCalls += "open ";
            *phPolicy = open == 0 ? &iPolicy : nullptr;
            return open;
        });
    const auto setPatch =
        PATCH_IMPORT(LsaSetInformationPolicy, [&](LSA_HANDLE hPolicy, POLICY_INFORMATION_CLASS kind, void* pBuffer) {
            const auto& information = *static_cast<POLICY_PRIMARY_DOMAIN_INFO*>(pBuffer);
            EXPECT_EQ(&iPolicy, hPolicy);
            EXPECT_EQ(PolicyPrimaryDomainInformation, kind);
            EXPECT_EQ(nullptr, information.Sid);
            EXPECT_EQ(information.Name.Length + 2, information.Name.MaximumLength);
            EXPECT_EQ(L'\0', information.Name.Buffer[information.Name.Length / 2]);
            sWritten.assign(information.Name.Buffer, information.Name.Length / 2);
            sCalls += "set ";
            return set;
        });
    const auto closePatch = PATCH_IMPORT(LsaClose, [&](LSA_HANDLE hPolicy) {
        EXPECT_EQ(&iPolicy, hPolicy);
        sCalls += "close";
        return close;
    });
    const std::string ALL = "open set close";
    const struct
    {
        std::wstring sName;
        NTSTATUS open, set, close;
        std::string sCalls;
        std::string sSaid;
    } rows[] = {
        {L"", 0, 0, 0, "", "[E] ... ending( empty string parameter )"},
        {L"Z", 0, 0, 0, ALL, "[V] ... ending"},
        {L"ZELK \x65E5\x672C", 0, 0, 0, ALL, "[V] ... ending"},
        {L"Z", DENIED, 0, 0, "open ", "[E] ... ending( LsaOpenPolicy failed ) : ulRc = 5"},
        {L"Z", 0, DENIED, 0, ALL, "[E] LsaSetInformationPolicy failed : ulRc = 5; [E] ... ending( Failed )"},
        {L"Z", 0, 0, DENIED, ALL, "[E] ... ending( LsaClose failed ) : ulRc = 5"},
        {L"Z", 0, DENIED, DENIED, ALL,
         "[E] LsaSetInformationPolicy failed : ulRc = 5; [E] ... ending( LsaClose failed ) : ulRc = 5"},
        // What a length field of 16 bits can hold, and what would wrap around in it.
        {std::wstring(32766, L'Z'), 0, 0, 0, ALL, "[V] ... ending"},
        {std::wstring(32767, L'Z'), 0, 0, 0, "", "[E] ... ending( workgroup name too long )"},
        {std::wstring(32769, L'Z'), 0, 0, 0, "", "[E] ... ending( workgroup name too long )"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(std::to_string(row.sName.size()) + row.sSaid);
        std::tie(open, set, close) = std::tie(row.open, row.set, row.close);
        sCalls = "";
        sWritten = L"";
        trace.Empty();
        EXPECT_EQ(row.sSaid[1] == 'V', TOLVA::SetWorkgroupName(velmor::string(row.sName.c_str())));
        EXPECT_EQ(row.sSaid, Said("TOLVA::SetWorkgroupName"));
        EXPECT_EQ(row.sCalls, sCalls);
        EXPECT_TRUE(row.sCalls != ALL || row.sName == sWritten);
    }
}

} // namespace
