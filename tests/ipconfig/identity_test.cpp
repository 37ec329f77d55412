#include <algorithm>
#include <cstring>
#include <tuple>

#include "ipconfig_test.h"

#include <dsrole.h>
#include <ntsecapi.h>

using namespace testing_support;

namespace
{

constexpr const wchar_t* PARAMETERS = L"SYSTEM\\CurrentControlSet\\services\\Tcpip\\Parameters";

using Identity = IpconfigTest;

TEST_F(Identity, NamesOfEveryLength)
{
    TheTrace.SetTraceLevel(4);
    std::wstring sName;
    ADD_PATCH(patches, GetComputerNameExW, [&](COMPUTER_NAME_FORMAT format, wchar_t* pszName, DWORD* pdwSize) -> BOOL {
        const DWORD dwForced = Called("GetComputerNameEx", Show("name", format, pszName != nullptr));
        const DWORD dwGiven = std::exchange(*pdwSize, static_cast<DWORD>(sName.size() + 1));
        ::SetLastError(dwForced != TRUE_ANSWER ? dwForced : ERROR_MORE_DATA);
        if (dwForced == TRUE_ANSWER && pszName == nullptr && sName.empty()) // nothing to make room for
            return TRUE;
        if (dwForced != TRUE_ANSWER || pszName == nullptr || dwGiven <= sName.size())
            return FALSE;
        std::copy_n(sName.c_str(), sName.size() + 1, pszName);
        *pdwSize = static_cast<DWORD>(sName.size());
        return TRUE;
    });
    for (const auto get : {&TOLVA::GetComputerNameW, &TOLVA::GetPrimaryDnsSuffix, &TOLVA::GetFullComputerName})
    {
        velmor::string sFound = L"old";
        const auto Get = [&] { return Show(get(sFound), sFound); };
        for (const std::size_t length : {0U, 15U, 254U, 16U})
        {
            sName = std::wstring(length, L'\x65E5') + (length == 15 ? L"\xD83D\xDE00" : L"");
            Tell(Show("of length", length), Get);
        }
        for (const auto& answers : {std::deque<DWORD>{87}, {TRUE_ANSWER, 87}})
        {
            codes["GetComputerNameEx"] = answers;
            Tell("failing", Get);
        }
    }
}

TEST_F(Identity, NamesAreWrittenTwice)
{
    const RegistryData OLD = StringData(L"old");
    const RegistryKeyScope key(PARAMETERS);
    for (const auto& [set, sValue] :
         {std::pair(&TOLVA::SetComputerNameW, std::wstring(L"Hostname")), {&TOLVA::SetPrimaryDnsSuffix, L"Domain"}})
        for (const wchar_t* pszName : {L"", L"zelk \x65E5\x672C"})
            for (const int iFail : {0, 1, 2})
            {
                const RegistryValueScope now(PARAMETERS, sValue, OLD), later(PARAMETERS, L"NV " + sValue, OLD);
                iFailWrite = iFail;
                const auto Set = [&, set = set, &sName = sValue] {
                    const bool bRc = set(pszName);
                    return Show(bRc, key.Get(L"", sName), "later", key.Get(L"", L"NV " + sName));
                };
                Tell(Show(sValue, "is", pszName, "failing write:", iFail), Set);
            }
}

TEST_F(Identity, WorkgroupIsRead)
{
    TheTrace.SetTraceLevel(4);
    DSROLE_PRIMARY_DOMAIN_INFO_BASIC information = {};
    int iAllocated = 0;
    const auto get = PATCH_IMPORT(DsRoleGetPrimaryDomainInformation, [&](auto* pszServer, auto level, PBYTE* ppBuffer) {
        EXPECT_TRUE(pszServer == nullptr && level == DsRolePrimaryDomainInfoBasic);
        const DWORD dwForced = Called("DsRole", "role");
        iAllocated += dwForced == TRUE_ANSWER ? 1 : 0;
        *ppBuffer = dwForced == TRUE_ANSWER ? reinterpret_cast<PBYTE>(&information) : nullptr;
        return dwForced == TRUE_ANSWER ? NO_ERROR : dwForced;
    });
    const auto release = PATCH_IMPORT(DsRoleFreeMemory, [&](void* pBuffer) {
        EXPECT_EQ(&information, pBuffer);
        --iAllocated;
        information.DomainNameFlat = nullptr;
    });
    wchar_t name[] = L"ZELK\x65E5";
    velmor::string sWorkgroup;
    const auto Get = [&] { return Show(TOLVA::GetWorkgroupName(sWorkgroup), sWorkgroup); };
    for (int role = 0; role <= 6; ++role)
    {
        information.MachineRole = static_cast<DSROLE_MACHINE_ROLE>(role);
        information.DomainNameFlat = name;
        Tell(Show("role", role), Get);
    }
    codes["DsRole"] = {ERROR_ACCESS_DENIED};
    Tell("denied", Get);
    Tell("a machine without a flat name", Get);
    EXPECT_EQ(0, iAllocated);
}

TEST_F(Identity, WorkgroupIsSet)
{
    int iPolicy = 0;
    const auto Answer = [&](const std::string& sCall) {
        return static_cast<NTSTATUS>(Called("", sCall) == TRUE_ANSWER ? 0 : 0xC0000022);
    };
    const auto open = PATCH_IMPORT(LsaOpenPolicy, [&](auto* pSystem, auto* pAttributes, auto access, void** phPolicy) {
        const LSA_OBJECT_ATTRIBUTES NONE = {};
        EXPECT_EQ(0, std::memcmp(&NONE, pAttributes, sizeof(NONE)));
        EXPECT_TRUE(pSystem == nullptr && access == 0xF0FFF);
        const NTSTATUS rc = Answer("open");
        *phPolicy = rc == 0 ? &iPolicy : nullptr;
        return rc;
    });
    const auto set = PATCH_IMPORT(LsaSetInformationPolicy, [&](void* hPolicy, auto kind, void* pBuffer) {
        const auto& [name, pSid] = *static_cast<POLICY_PRIMARY_DOMAIN_INFO*>(pBuffer);
        EXPECT_TRUE(hPolicy == &iPolicy && kind == PolicyPrimaryDomainInformation && pSid == nullptr);
        EXPECT_TRUE(name.Length + 2 == name.MaximumLength && name.Buffer[name.Length / 2] == L'\0');
        return Answer(
            Show("set", std::wstring_view(name.Buffer, std::min<std::size_t>(name.Length / 2, 9)), name.Length));
    });
    const auto close = PATCH_IMPORT(LsaClose, [&](void* hPolicy) {
        EXPECT_EQ(&iPolicy, hPolicy);
        return Answer("close");
    });
    // What a length field of 16 bits can hold, and what would wrap around in it.
    for (const std::wstring& sName : {std::wstring(), std::wstring(L"ZELK \x65E5\x672C"), std::wstring(32766, L'Z'),
                                      std::wstring(32767, L'Z'), std::wstring(32769, L'Z')})
    {
        const bool bRc = TOLVA::SetWorkgroupName(velmor::string(sName));
        golden->Line("== a name of", sName.size(), bRc);
        golden->Line(Asked());
    }
    for (const auto& words : {std::vector<std::string>{"open"}, {"set"}, {"close"}, {"set", "close"}})
    {
        refused = words;
        Tell(Show("refused", words), [] { return TOLVA::SetWorkgroupName(L"Z"); });
    }
}

} // namespace
