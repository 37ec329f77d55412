#include "ipconfig_test.h"

#include <algorithm>
#include <cstring>

#include <dsrole.h>
#include <ntsecapi.h>

using namespace testing_support;

namespace
{

constexpr const wchar_t* PARAMETERS = L"SYSTEM\\CurrentControlSet\\services\\Tcpip\\Parameters";

using Identity = IpconfigTest;

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
    const std::tuple<bool (*)(velmor::string&), COMPUTER_NAME_FORMAT, std::string, std::string> rows[] = {
        {&TOLVA::GetComputerNameW, ComputerNameDnsHostname, "ComputerName", "GetComputerNameExW"},
        {&TOLVA::GetPrimaryDnsSuffix, ComputerNameDnsDomain, "PrimaryDnsSuffix", "GetComputerNameEx"},
        {&TOLVA::GetFullComputerName, ComputerNameDnsFullyQualified, "FullComputerName", "GetComputerNameEx"}};
    for (const auto& [get, format, sWhat, sCalled] : rows)
    {
        SCOPED_TRACE(sWhat);
        const std::string sOperation = "TOLVA::Get" + sWhat + (sWhat == "ComputerName" ? "W" : "");
        velmor::string sFound = L"old";
        for (const std::size_t length : {0U, 15U, 16U, 254U, 6U})
        {
            sName = length == 6 ? L"zelk-1" : std::wstring(length, L'\x65E5') + (length == 15 ? L"\xD83D\xDE00" : L"");
            trace.Empty();
            EXPECT_TRUE(get(sFound));
            EXPECT_EQ(sName, Text(sFound));
            EXPECT_EQ(format, asked);
        }
        trace.ExpectLines({"[V] " + sOperation + " : starting ...",
                           "[V] " + sOperation + " : s" + sWhat + " = \"zelk-1\"",
                           "[V] " + sOperation + " : ... ending"});
        for (DWORD& dwCode : codes)
        {
            dwCode = ERROR_INVALID_PARAMETER;
            trace.Empty();
            EXPECT_FALSE(get(sFound));
            EXPECT_EQ("[E] ... ending( " + sCalled + " failed ) : dwLastError = 87", Said(sOperation));
            dwCode = 0;
        }
        EXPECT_EQ(L"zelk-1", Text(sFound));
    }
}

TEST_F(Identity, NamesAreWrittenTwice)
{
    const RegistryData OLD = StringData(L"old");
    const std::tuple<bool (*)(const velmor::string&), std::string, std::wstring> operations[] = {
        {&TOLVA::SetComputerNameW, "TOLVA::SetComputerNameW", L"Hostname"},
        {&TOLVA::SetPrimaryDnsSuffix, "TOLVA::SetPrimaryDnsSuffix", L"Domain"}};
    const RegistryKeyScope key(PARAMETERS);
    for (const auto& [set, sOperation, sValue] : operations)
        for (const wchar_t* pszName : {L"", L"zelk \x65E5\x672C"})
            for (const int iFail : {0, 1, 2})
            {
                SCOPED_TRACE(sOperation + std::to_string(iFail));
                const RegistryValueScope now(PARAMETERS, sValue, OLD), later(PARAMETERS, L"NV " + sValue, OLD);
                Asked();
                iFailWrite = iFail;
                EXPECT_EQ(iFail == 0, set(pszName));
                const std::string sFailed = (iFail == 1 ? "" : "NV ") + std::string(sValue.begin(), sValue.end());
                EXPECT_EQ(
                    std::string(*pszName == L'\0' && sValue == L"Domain" ? "[W] Empty Primary DNS suffix; " : "") +
                        (iFail == 0 ? "[V] ... ending" : "[E] ... ending( Set '" + sFailed + "' failed )"),
                    Said(sOperation));
                EXPECT_EQ(iFail == 1 ? OLD : StringData(pszName), key.Get(L"", sValue));
                EXPECT_EQ(iFail == 0 ? StringData(pszName) : OLD, key.Get(L"", L"NV " + sValue));
            }
}

TEST_F(Identity, WorkgroupIsRead)
{
    DSROLE_PRIMARY_DOMAIN_INFO_BASIC information = {};
    DWORD dwRc = 0;
    int iAllocated = 0;
    const auto get = PATCH_IMPORT(DsRoleGetPrimaryDomainInformation, [&](auto* pszServer, auto level, PBYTE* ppBuffer) {
        EXPECT_TRUE(pszServer == nullptr && level == DsRolePrimaryDomainInfoBasic);
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
    const std::string ROLE = "MachineRole=DsRole_Role";
    const std::string roles[] = {"",
                                 ROLE + "MemberWorkstation",
                                 "",
                                 ROLE + "MemberServer",
                                 ROLE + "BackupDomainController",
                                 ROLE + "PrimaryDomainController",
                                 "pDsRole->MachineRole = 6"};
    wchar_t name[] = L"ZELK\x65E5";
    velmor::string sWorkgroup;
    for (const std::string& sRole : roles)
    {
        information.MachineRole = static_cast<DSROLE_MACHINE_ROLE>(&sRole - roles);
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
    int iPolicy = 0;
    std::string sRefused, sCalls;
    std::wstring sWritten;
    const auto Called = [&](const std::string& sName) {
        sCalls += sName;
        return static_cast<NTSTATUS>(sRefused.find(sName) != std::string::npos ? 0xC0000022 : 0);
    };
    const auto open = PATCH_IMPORT(LsaOpenPolicy, [&](auto* pSystem, auto* pAttributes, auto access, void** phPolicy) {
        const LSA_OBJECT_ATTRIBUTES NONE = {};
        EXPECT_EQ(0, std::memcmp(&NONE, pAttributes, sizeof(NONE)));
        EXPECT_TRUE(pSystem == nullptr && access == 0xF0FFF);
        const NTSTATUS rc = Called("open ");
        *phPolicy = rc == 0 ? &iPolicy : nullptr;
        return rc;
    });
    const auto set = PATCH_IMPORT(LsaSetInformationPolicy, [&](void* hPolicy, auto kind, void* pBuffer) {
        const auto& [name, pSid] = *static_cast<POLICY_PRIMARY_DOMAIN_INFO*>(pBuffer);
        EXPECT_TRUE(hPolicy == &iPolicy && kind == PolicyPrimaryDomainInformation && pSid == nullptr);
        EXPECT_EQ(name.Length + 2, name.MaximumLength);
        EXPECT_EQ(L'\0', name.Buffer[name.Length / 2]);
        sWritten.assign(name.Buffer, name.Length / 2);
        return Called("set ");
    });
    const auto close = PATCH_IMPORT(LsaClose, [&](void* hPolicy) {
        EXPECT_EQ(&iPolicy, hPolicy);
        return Called("close ");
    });
    const std::string ALL = "open set close ", DONE = "[V] ... ending";
    const std::string LONG = "[E] ... ending( workgroup name too long )";
    const std::string NOT_SET = "[E] LsaSetInformationPolicy failed : ulRc = 5; ";
    const std::string NOT_CLOSED = "[E] ... ending( LsaClose failed ) : ulRc = 5";
    const std::tuple<std::wstring, std::string, std::string, std::string> rows[] = {
        {L"", "", "", "[E] ... ending( empty string parameter )"},
        {L"ZELK \x65E5\x672C", "", ALL, DONE},
        {L"Z", "open ", "open ", "[E] ... ending( LsaOpenPolicy failed ) : ulRc = 5"},
        {L"Z", "set ", ALL, NOT_SET + "[E] ... ending( Failed )"},
        {L"Z", "close ", ALL, NOT_CLOSED},
        {L"Z", "set close ", ALL, NOT_SET + NOT_CLOSED},
        // What a length field of 16 bits can hold, and what would wrap around in it.
        {std::wstring(32766, L'Z'), "", ALL, DONE},
        {std::wstring(32767, L'Z'), "", "", LONG},
        {std::wstring(32769, L'Z'), "", "", LONG},
    };
    for (const auto& [sName, sNot, sExpected, sSaid] : rows)
    {
        SCOPED_TRACE(std::to_string(sName.size()) + sSaid);
        sRefused = sNot;
        sCalls = "";
        trace.Empty();
        EXPECT_EQ(sSaid == DONE, TOLVA::SetWorkgroupName(velmor::string(sName.c_str())));
        EXPECT_EQ(sSaid, Said("TOLVA::SetWorkgroupName"));
        EXPECT_EQ(sExpected, sCalls);
        EXPECT_TRUE(sCalls != ALL || sName == sWritten);
    }
}

} // namespace
