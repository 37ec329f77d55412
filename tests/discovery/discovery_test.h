#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <support/import_patch.h>
#include <support/registry_scope.h>
#include <support/resources.h>
#include <support/traced.h>
#include <zelk_nm/tolva.h>

constexpr const wchar_t* GUID_A = L"{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C}";
constexpr const wchar_t* CLASS_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr const wchar_t* CONNECTION_KEY = L"SYSTEM\\CurrentControlSet\\Control\\Network\\"
                                          L"{4D36E972-E325-11CE-BFC1-08002BE10318}\\"
                                          L"{0A1B2C3D-5E6F-4711-8123-9D0E1F2A3B4C}\\Connection";
constexpr const wchar_t* DEVICE_CLASS_KEY =
    L"SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\{AD498944-762F-11D0-8DCB-00C04FC3358C}";

/// Words that a failing comparison can show, and table rows can hold.
inline std::wstring Text(const velmor::string& text)
{
    return {text.c_str(), text.size()};
}

/// The transcript that stands in `text`, one line a line; "<guid>" stands for the adapter's GUID, "@" for the
/// operation.
std::vector<std::string> Transcript(std::string text, std::string_view sOperation = "@");

/// The platform's table of IPv4 interfaces. The first call of a pair asks for the size, the second for the table.
struct FakeInterfaceTable
{
    std::vector<std::wstring> names;
    std::optional<LONG> claimed; ///< a count that is not the true one
    std::vector<DWORD> codes;    ///< forced results of the first calls
    unsigned int calls = 0;
    bool bBufferWasZero = true;

    DWORD Answer(IP_INTERFACE_INFO* pTable, ULONG* pulSize);
};

/// The platform's adapter-address table, laid out in the caller's buffer as the platform does it.
struct FakeAddressTable
{
    struct Call
    {
        ULONG ulFamily;
        ULONG ulFlags;
        ULONG ulSize;

        bool operator==(const Call&) const = default;
    };
    /// Where a record ends, poison follows: pointers that cannot be followed and numbers that nobody wrote.
    struct Entry
    {
        IP_ADAPTER_ADDRESSES record = {};
        ULONG ulLength = sizeof(IP_ADAPTER_ADDRESSES);
    };

    std::vector<Entry> entries;
    std::vector<DWORD> codes; ///< forced results of the first calls, 0 for the true ones
    std::vector<Call> calls;

    IP_ADAPTER_ADDRESSES& Add(DWORD dwIndex);
    [[nodiscard]] ULONG Size() const noexcept;
    DWORD Answer(ULONG ulFamily, ULONG ulFlags, void* pReserved, IP_ADAPTER_ADDRESSES* pTable, ULONG* pulSize);
};

/// The platform's tables are made up; the registry is the real one. A case that leaves a handle
/// open fails.
class DiscoveryTest : public testing_support::Traced
{
protected:
    DiscoveryTest();
    ~DiscoveryTest() override;

    static TOLVA::NIC_INFO Adapter(const wchar_t* pszGuid = GUID_A);
    /// The registry of a complete adapter whose class subkey is "0007".
    void SeedAdapter();
    void Seed(const std::wstring& sKey, const std::wstring& sName, const testing_support::RegistryData& data);

    FakeInterfaceTable interfaces;
    FakeAddressTable addresses;
    std::vector<std::wstring> indexNames; ///< what GetAdapterIndex was asked for
    std::vector<DWORD> indexCodes;        ///< forced results of its first calls
    unsigned long ulIndex = 11;
    testing_support::ImportPatches patches; ///< more of them may be added

private:
    unsigned int m_uiHandles;
    std::map<std::wstring, std::unique_ptr<testing_support::RegistryKeyScope>> m_keys;
};
