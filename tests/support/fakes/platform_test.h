#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <support/golden.h>
#include <support/import_patch.h>
#include <support/registry_scope.h>
#include <support/resources.h>
#include <support/traced.h>
#include <zelk_nm/tolva.h>

namespace testing_support
{

constexpr const wchar_t* GUID_A = L"{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C}";
constexpr const wchar_t* CLASS_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr const wchar_t* CONNECTION_KEY = L"SYSTEM\\CurrentControlSet\\Control\\Network\\"
                                          L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\"
                                          L"{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C}\\Connection";
constexpr const wchar_t* DEVICE_CLASS_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";

/// Among forced codes: this call is answered as the platform would.
constexpr DWORD TRUE_ANSWER = 0xFFFFFFFF;
/// A value that is not in the registry.
const RegistryData MISSING;

inline velmor::ip_address Ip(const std::string& sAddress)
{
    return velmor::ip_address(velmor::string(sAddress.c_str()));
}
/// What blanks separate.
std::vector<std::string> Words(const std::string& sText);

/// What golden/SUITE/steps.json holds: groups of steps, by name.
nlohmann::json StepsOf(const std::string& sSuite);
std::vector<std::string> NamesIn(const nlohmann::json& groups);

/// A route of the platform, in the tables of both generations; those before Vista have IPv4 only.
struct FakeRoute
{
    DWORD dwIndex = 11;
    std::string sDestination = "0.0.0.0";
    UINT8 prefix = 0;
    std::string sNextHop = "10.0.0.1";
    DWORD dwMetric = 1;
    [[nodiscard]] const std::string& OfFamily() const { return sNextHop; }
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FakeRoute, dwIndex, sDestination, prefix, sNextHop, dwMetric)

/// A unicast address of the platform, likewise.
struct FakeAddress
{
    DWORD dwIndex = 11;
    std::string sAddress;
    UINT8 prefix = 24;
    WORD wType = MIB_IPADDR_PRIMARY; ///< before Vista
    int prefixOrigin = IpPrefixOriginManual, suffixOrigin = IpSuffixOriginManual;
    int dadState = IpDadStatePreferred;
    ULONG ulScope = 0;
    [[nodiscard]] const std::string& OfFamily() const { return sAddress; }
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FakeAddress, dwIndex, sAddress, prefix, wType, prefixOrigin,
                                                suffixOrigin, dadState, ulScope)

/// An entry of the platform's adapter-address table. Where the record ends, poison follows: pointers that cannot be
/// followed and numbers that nobody wrote.
struct FakeAdapter
{
    IP_ADAPTER_ADDRESSES record = {};
    ULONG ulLength = sizeof(IP_ADAPTER_ADDRESSES);
};

/// The network side of Windows, kept in memory: IP Helper of both generations, the device installer, the command
/// interpreter. The registry is the real one. Every request is noted and can be refused. A case that leaves a handle
/// open or a table allocated fails.
class PlatformTest : public Traced
{
public:
    PlatformTest();
    ~PlatformTest() override;

    /// Notes a request and decides on it: the function's next forced code, the last error too; access denied where the
    /// note holds a word of `refused`; else TRUE_ANSWER.
    DWORD Called(const std::string& sFunction, const std::string& sNote);
    /// The same for a function that the platform would answer with success.
    DWORD CodeOf(const std::string& sFunction, const std::string& sNote)
    {
        const DWORD dwForced = Called(sFunction, sNote);
        return dwForced != TRUE_ANSWER ? dwForced : NO_ERROR;
    }

protected:
    static TOLVA::NIC_INFO Adapter(const wchar_t* pszGuid = GUID_A);
    /// A value of a key below HKEY_LOCAL_MACHINE, until the case ends; without a name the key alone, without data the
    /// value is removed.
    void Seed(const std::wstring& sKey, const std::wstring& sName, const RegistryData& data);
    /// The registry of a complete adapter whose class subkey is "0007".
    void SeedAdapter();
    IP_ADAPTER_ADDRESSES& AddAdapter(DWORD dwIndex = 11);

    /// Changes what a step in JSON says of the platform below, of the level of the trace, or of values of the registry,
    /// which are a type and a text or a number.
    void Arrange(const nlohmann::json& step);
    /// Forgets what has been asked and traced.
    void Begin();
    /// The requests since then, each in a line that begins with "> ".
    std::string Asked() { return std::exchange(m_sAsked, {}); }
    /// Writes into the golden text what a use of the library answers, what it asks of the platform and what it traces.
    template <class Run>
    void Tell(const std::string& sTitle, Run run)
    {
        Begin();
        const std::string sAnswer = Show(run());
        WriteDown(sTitle, sAnswer);
    }
    /// Writes down an answer, and what has been asked and traced since Begin.
    void WriteDown(const std::string& sTitle, const std::string& sAnswer);
    /// Runs the body in a new process, where nothing of the library has been used yet, up to that process's end. What
    /// it tells is a golden text of its own.
    void InNewProcess(const std::string& sPart, const std::function<void()>& body);

    void ExpectNothingOpen() const; ///< holds at a case's end

    std::map<std::string, std::deque<DWORD>> codes; ///< forced results of a function's next calls
    std::vector<std::string> refused;               ///< words of requests that fail
    std::set<std::string> missing;                  ///< modules and exports that this system does not have
    std::vector<std::wstring> interfaces;           ///< device names
    std::optional<LONG> claimedInterfaces;          ///< a count that is not the true one
    std::optional<ULONG> claimedSize;               ///< likewise, in bytes
    std::vector<FakeAdapter> adapters;
    std::vector<std::pair<DWORD, std::string>> oldAdapters; ///< before Vista; index 0 goes on with the one before
    std::vector<FakeRoute> routes;
    std::vector<FakeAddress> addresses;
    unsigned long ulIndex = 11; ///< of every adapter
    DWORD dwLowestMetric = 0;   ///< of a route that is taken
    DWORD dwSpeed = 100000000;  ///< of every interface
    int iFailWrite = 0;         ///< that registry write from now on fails
    int iModules = 0;           ///< loaded and not freed
    ImportPatches patches;      ///< more of them may be added

private:
    friend struct Exports;
    template <class Table, class Row>
    DWORD FillTable(const char* pszFunction, const std::vector<Row>& rows, Table* pTable, ULONG* pulSize, BOOL bSort);
    template <class Table, class Row>
    DWORD Allocate(const char* pszFunction, int family, const std::vector<Row>& rows, Table** ppTable);
    template <class Row>
    DWORD Create(const char* pszFunction, const Row& row, DWORD dwMetric);
    template <class Row>
    DWORD Delete(const char* pszFunction, const Row& row);
    DWORD GetInterfaces(IP_INTERFACE_INFO* pTable, ULONG* pulSize);
    DWORD GetAdapters(ULONG ulFamily, ULONG ulFlags, void* pReserved, IP_ADAPTER_ADDRESSES* pTable, ULONG* pulSize);
    DWORD GetOldAdapters(IP_ADAPTER_INFO* pTable, ULONG* pulSize);
    void ReplaceTables();
    void ReplaceRoutesAndAddresses();
    void ReplaceLoader();
    void ReplaceDevices();
    void ReplaceCommands();
    void WarmUp();

    std::string m_sAsked;
    std::set<std::string> m_created;                      ///< routes, by what makes two the same
    std::map<void*, std::vector<unsigned char>> m_tables; ///< allocated and not freed
    std::vector<std::vector<unsigned char>> m_freed;      ///< kept, so that late readers find poison
    std::map<std::wstring, std::unique_ptr<RegistryKeyScope>> m_keys;
    unsigned int m_uiHandles;
};

} // namespace testing_support
