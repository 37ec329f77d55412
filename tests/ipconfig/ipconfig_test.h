#pragma once

#include <cstdint>

#include <discovery/discovery_test.h>
#include <support/files.h>
#include <support/printers.h>

/// Whether this Windows is to be Vista or later: the program's name tells what was asked of Wine.
inline const bool VISTA = !std::string_view(_pgmptr).ends_with("_5_2.exe");
/// What is expected of the generation that this is.
inline std::string On(std::string sVista, std::string sOlder)
{
    return VISTA ? std::move(sVista) : std::move(sOlder);
}

constexpr auto UNKNOWN_FAMILY = static_cast<TOLVA::FAMILY_TYPE>(5);
/// A value that is not there.
const testing_support::RegistryData MISSING;

inline velmor::ip_address Ip(const char* pszAddress)
{
    return velmor::ip_address(velmor::string(pszAddress));
}
/// What blanks part.
std::vector<std::string> Words(const std::string& sText);
inline testing_support::RegistryData ListData(const std::wstring& sEntry)
{
    return testing_support::StringData(sEntry + L'\0', REG_MULTI_SZ);
}

/// The adapter "LAN 2" of index 11. Commands, device, routes and addresses are made up; only the registry is real.
/// Its addresses are fe80::1/64, fe80::2/64, 10.0.0.1/16 and 10.0.0.2/16; its routes 10.0.0.0/8 by 10.0.0.3 and the
/// default ones by 10.0.0.1, 10.0.0.4 (for 10.0.0.0/0) and fe80::1. Another adapter has some too. No case has others:
/// before Vista they are read once in the process.
class IpconfigTest : public DiscoveryTest
{
public:
    IpconfigTest();
    ~IpconfigTest() override { EXPECT_EQ(0, iTables) << "tables that were not freed"; }

    /// A value of the adapter's interface key; without data it is removed.
    void Store(bool bIpv6, const wchar_t* pszName, const testing_support::RegistryData& data);
    [[nodiscard]] testing_support::RegistryData Stored(bool bIpv6, const wchar_t* pszName) const;
    /// Makes the interface key missing.
    void RemoveKey(bool bIpv6) const;
    /// What an operation wrote under its name, joined by "; ". Of its verbose lines the endings alone. An address with
    /// its usual variable is "@" and the address.
    [[nodiscard]] std::string Said(const std::string& sOperation) const;
    /// What was asked of the system since the last question, likewise; the trace then begins anew too. Commands are
    /// shortened to what differs among them; the functions that change addresses on older systems are told likewise.
    std::string Asked();
    /// Notes a request and gives its result.
    DWORD Answer(const std::string& sRequest);

    TOLVA::NIC_INFO NicInfo = Adapter();
    std::vector<std::string> refused; ///< a request that holds one of these words fails
    int iFailWrite = 0;               ///< that registry write from now on fails
    DWORD dwTableRc = 0;              ///< of the tables of addresses and routes
    int iTables = 0;                  ///< that are allocated
    std::wstring sRecord;             ///< where stand-ins leave their command line; with it commands are really run

private:
    template <class Function, class Fake>
    void Replace(const char* pszFunction, Fake fake)
    {
        m_patches.push_back(std::make_shared<testing_support::ImportPatch<Function>>(pszFunction, std::move(fake)));
    }
    void ReplaceCommandsAndDevice();
    void ReplaceOlderFunctions();

    std::string m_sAsked;
    std::vector<std::shared_ptr<void>> m_patches;
};
