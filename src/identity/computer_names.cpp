// Identity: the machine's own names. They are read from the running system, and written where it takes them from at its
// next start: names below the TCP/IP parameters of the registry, the workgroup in the security authority's policy.

#include <algorithm>
#include <string>

#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

/// One of the system's names of the machine.
struct NameQuery
{
    const char* pszOperation;
    COMPUTER_NAME_FORMAT format;
    const char* pszVariable;
    const char* pszFailure;
};

bool ReadName(const NameQuery& query, velmor::string& sName)
{
    return RunOperation(query.pszOperation, [&](const CallFrame& frame) {
        DWORD dwSize = 0;
        if (!::GetComputerNameExW(query.format, nullptr, &dwSize))
        {
            const DWORD dwLastError = ::GetLastError();
            if (dwLastError != ERROR_MORE_DATA)
                return frame.Fail(query.pszFailure, "dwLastError", dwLastError);
        }
        // An empty name, as a machine without a domain has, may need no buffer at all.
        dwSize = std::max<DWORD>(dwSize, 1);
        std::wstring sBuffer(dwSize, L'\0');
        if (!::GetComputerNameExW(query.format, sBuffer.data(), &dwSize))
            return frame.Fail(query.pszFailure, "dwLastError", ::GetLastError());
        sName = sBuffer.c_str();
        frame.Verbose(query.pszVariable, sName);
        return frame.Succeed();
    });
}

/// Each name has two values, both of which the system reads at its start: the one in use, which DHCP may change, and
/// its non-volatile copy ("NV").
bool WriteParameter(const wchar_t* pszValue, const velmor::string& sName)
{
    return velmor::Registry_System().SetString(TCPIP_PARAMETERS, pszValue, sName);
}

} // namespace

bool TOLVA::GetComputerNameW(velmor::string& sComputerName)
{
    return ReadName({"TOLVA::GetComputerNameW", ComputerNameDnsHostname, "sComputerName", "GetComputerNameExW failed"},
                    sComputerName);
}

bool TOLVA::GetPrimaryDnsSuffix(velmor::string& sPrimaryDnsSuffix)
{
    return ReadName(
        {"TOLVA::GetPrimaryDnsSuffix", ComputerNameDnsDomain, "sPrimaryDnsSuffix", "GetComputerNameEx failed"},
        sPrimaryDnsSuffix);
}

bool TOLVA::GetFullComputerName(velmor::string& sFullComputerName)
{
    return ReadName(
        {"TOLVA::GetFullComputerName", ComputerNameDnsFullyQualified, "sFullComputerName", "GetComputerNameEx failed"},
        sFullComputerName);
}

bool TOLVA::SetComputerNameW(const velmor::string& sComputerName)
{
    return RunOperation("TOLVA::SetComputerNameW", [&](const CallFrame& frame) {
        frame.Verbose("sComputerName", sComputerName);
        if (!WriteParameter(L"Hostname", sComputerName))
            return frame.Fail("Set 'Hostname' failed");
        if (!WriteParameter(L"NV Hostname", sComputerName))
            return frame.Fail("Set 'NV Hostname' failed");
        return frame.Succeed();
    });
}

bool TOLVA::SetPrimaryDnsSuffix(const velmor::string& sPrimaryDnsSuffix)
{
    return RunOperation("TOLVA::SetPrimaryDnsSuffix", [&](const CallFrame& frame) {
        if (sPrimaryDnsSuffix.empty())
            frame.Warning("Empty Primary DNS suffix");
        else
            frame.Verbose("sPrimaryDnsSuffix", sPrimaryDnsSuffix);
        if (!WriteParameter(L"Domain", sPrimaryDnsSuffix))
            return frame.Fail("Set 'Domain' failed");
        if (!WriteParameter(L"NV Domain", sPrimaryDnsSuffix))
            return frame.Fail("Set 'NV Domain' failed");
        return frame.Succeed();
    });
}
