#pragma once

#include <cstdint>

#include <discovery/discovery_test.h>
#include <support/files.h>
#include <support/printers.h>

constexpr auto UNKNOWN_FAMILY = static_cast<TOLVA::FAMILY_TYPE>(5);
/// A value that is not there.
const testing_support::RegistryData MISSING;

velmor::ip_address Ip(const char* pszAddress);
testing_support::RegistryData ListData(const std::vector<std::wstring>& entries);

/// The adapter "LAN 2" of index 11. Commands, device, routes and addresses are made up; only the registry is real.
class IpconfigTest : public DiscoveryTest
{
protected:
    IpconfigTest();
    ~IpconfigTest() override;

    /// A value of the adapter's interface key; without data it is removed.
    void Store(bool bIpv6, const wchar_t* pszName, const testing_support::RegistryData& data);
    [[nodiscard]] testing_support::RegistryData Stored(bool bIpv6, const wchar_t* pszName) const;
    /// Makes the interface key missing.
    void RemoveKey(bool bIpv6) const;
    void AddAddress(const char* pszAddress, UINT8 prefix, DWORD dwIndex = 11);
    void AddRoute(const char* pszDestination, UINT8 prefix, const char* pszNextHop, DWORD dwIndex = 11);
    /// What an operation wrote under its name, joined by "; ". Of its verbose lines the endings alone. An address with
    /// its usual variable is "@" and the address.
    [[nodiscard]] std::string Said(const std::string& sOperation) const;
    /// What was asked of the system since the last question, likewise; the trace then begins anew too. Commands are
    /// shortened to what differs among them, unless they are really run.
    std::string Asked();

    TOLVA::NIC_INFO NicInfo = Adapter();
    std::vector<std::string> refused; ///< a command or device request that holds one of these words fails
    int iFailWrite = 0;               ///< that registry write from now on fails
    DWORD dwTableRc = 0;              ///< of the tables of addresses and routes
    DWORD dwRouteRc = 0;              ///< of the making of a route
    std::wstring sRecord;             ///< where stand-ins leave their command line; with it commands are really run
    std::vector<MIB_UNICASTIPADDRESS_ROW> unicast;
    std::vector<MIB_IPFORWARD_ROW2> routes;

private:
    friend struct NewerFunctions;
    bool IsTaken(const std::string& sRequest);
    template <class Function, class Fake>
    void Replace(const char* pszFunction, Fake fake)
    {
        m_patches.push_back(std::make_shared<testing_support::ImportPatch<Function>>(pszFunction, std::move(fake)));
    }
    void ReplaceDevice();

    static IpconfigTest* s_pCurrent;
    std::string m_sAsked;
    int m_iOpen = 0; ///< tables and device sets
    DWORD m_dwNewState = 0;
    std::vector<std::shared_ptr<void>> m_patches;
};
