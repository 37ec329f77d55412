#include <support/fakes/platform_test.h>

using namespace testing_support;

namespace
{

class AdapterList : public PlatformTest
{
protected:
    static constexpr const wchar_t* GUID_B = L"{0B000000-0000-0000-0000-00000000000B}";

    AdapterList()
    {
        SeedAdapter();
        interfaces = {L"\\DEVICE\\TCPIP_" + std::wstring(GUID_A)};
        IP_ADAPTER_ADDRESSES& record = AddAdapter();
        record.FriendlyName = const_cast<wchar_t*>(L"Local Area Connection");
        record.PhysicalAddressLength = 6;
        for (BYTE i = 0; i < 6; ++i)
            record.PhysicalAddress[i] = static_cast<BYTE>(i + 10);
    }
    void TellList(const std::string& sTitle, std::vector<TOLVA::NIC_INFO> list = {})
    {
        Tell(sTitle, [&] { return Show(TOLVA::GetAdapterList(list), list); });
    }
};

TEST_F(AdapterList, ACompleteAdapter)
{
    TellList("a complete adapter");
    adapters[0].record.FriendlyName = const_cast<wchar_t*>(L"Renamed");
    TellList("once more: all are completed anew", {Adapter()});
}

/// Each row makes one step fail for the first of two records; the second has to be completed all the same.
TEST_F(AdapterList, AFailingStepEndsTheCompletionOfItsAdapterOnly)
{
    TheTrace.SetTraceLevel(3);
    const struct
    {
        std::string sStep;
        const wchar_t* pszEnum; ///< class subkey of the first record
        std::deque<DWORD> indexCodes;
    } rows[] = {{.sStep = "none", .pszEnum = L"0008", .indexCodes = {}},
                {.sStep = "AdapterDesc", .pszEnum = nullptr, .indexCodes = {}},
                {.sStep = "AdapterFriendlyName", .pszEnum = L"0008", .indexCodes = {5}},
                {.sStep = "AdapterPci", .pszEnum = L"0009", .indexCodes = {}},
                {.sStep = "AdapterType", .pszEnum = L"0008", .indexCodes = {TRUE_ANSWER, 5}},
                {.sStep = "HardwareAddress", .pszEnum = L"0008", .indexCodes = {TRUE_ANSWER, TRUE_ANSWER, 5}}};
    for (const auto& row : rows)
    {
        std::optional<RegistryKeyScope> key;
        if (row.pszEnum != nullptr)
        {
            key.emplace(std::wstring(CLASS_KEY) + L"\\" + row.pszEnum);
            key->Set(L"", L"NetCfgInstanceId", StringData(GUID_B));
            key->Set(L"", L"DriverDesc", StringData(L"B"));
            key->Set(L"", L"DeviceInstanceID", row.sStep == "AdapterPci" ? MISSING : StringData(L"PCI\\B"));
        }
        codes = {{"GetAdapterIndex", row.indexCodes}};
        TellList("failing: " + row.sStep, {{L"old", L"old", L"old", GUID_B, L"name", L"old", L"old", L"old"}});
    }
    const auto patch = PATCH_IMPORT(
        RegOpenKeyExW,
        [](auto original, HKEY hKey, const wchar_t* pszPath, DWORD dwOptions, REGSAM access, HKEY* phKey) -> LSTATUS {
            return pszPath == std::wstring(DEVICE_CLASS_KEY) ? ERROR_FILE_NOT_FOUND
                                                             : original(hKey, pszPath, dwOptions, access, phKey);
        });
    TellList("failing: the last step, without device classes");
}

} // namespace
