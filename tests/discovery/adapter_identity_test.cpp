#include <utility>

#include <support/fakes/platform_test.h>

using namespace testing_support;

namespace
{

class AdapterIdentity : public PlatformTest
{
protected:
    AdapterIdentity() { claimedInterfaces = 0; }
    /// Completes one record; the platform lists no adapter of its own.
    void Complete(const std::string& sTitle, const TOLVA::NIC_INFO& NicInfo)
    {
        std::vector<TOLVA::NIC_INFO> list = {NicInfo};
        Tell(sTitle, [&] { return Show(TOLVA::GetAdapterList(list), list); });
    }
};

TEST_F(AdapterIdentity, WhichSubkeyIsTheAdapters)
{
    const std::pair<std::wstring, std::wstring> rows[] = {{L"{0a1b2c3d-5e6f-4711-8123-9d0e1f2a3b4c}", L"{1}"},
                                                          {GUID_A, GUID_A},
                                                          {L"{1}", GUID_A},
                                                          {GUID_A + std::wstring(L"x"), std::wstring(GUID_A, 20)}};
    for (const auto& [sFirst, sSecond] : rows) // NetCfgInstanceId of the subkeys 0001 and 0002
    {
        const RegistryKeyScope first(CLASS_KEY + std::wstring(L"\\0001"));
        const RegistryKeyScope second(CLASS_KEY + std::wstring(L"\\0002"));
        second.Set(L"", L"NetCfgInstanceId", StringData(sSecond));
        first.Set(L"", L"NetCfgInstanceId", StringData(sFirst));
        Complete(Show(sFirst, sSecond), Adapter());
    }
}

TEST_F(AdapterIdentity, TheSearchSpeaksOfEverySubkeyWithAnInstance)
{
    const RegistryKeyScope key(CLASS_KEY);
    key.Set(L"0001", L"NetCfgInstanceId", StringData(L"{OTHER}"));
    key.Set(L"0002", L"DriverDesc", StringData(L"has no instance"));
    key.Set(L"0003", L"NetCfgInstanceId", StringData(GUID_A));
    key.Set(L"0003", L"DriverDesc", DwordData(1));
    key.Set(L"0004", L"NetCfgInstanceId", StringData(L"{NEVER SEEN}"));
    TOLVA::NIC_INFO NicInfo = Adapter();
    NicInfo.sNicDesc = L"kept";
    Complete("without a readable description, but found", NicInfo);
    Complete("not there", Adapter(L"{NOBODY}"));
    Complete("without a GUID", Adapter(L""));
    const auto patch = PATCH_IMPORT(RegOpenKeyExW, [](auto...) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    Complete("without the class key", Adapter());
}

TEST_F(AdapterIdentity, DeviceInstanceAndItsFallback)
{
    for (const auto& [device, connection] : {std::pair(StringData(L"PCI\\D"), StringData(L"PCI\\C")),
                                             {MISSING, StringData(L"PCI\\C")},
                                             {MISSING, MISSING}})
    {
        const RegistryKeyScope key(std::wstring(CLASS_KEY) + L"\\0001"), connectionKey(CONNECTION_KEY);
        key.Set(L"", L"NetCfgInstanceId", StringData(GUID_A));
        key.Set(L"", L"DeviceInstanceID", device);
        connectionKey.Set(L"", L"PnpInstanceID", connection);
        TOLVA::NIC_INFO NicInfo = Adapter();
        NicInfo.sNicPci = L"kept";
        Complete(Show(device, connection), NicInfo);
    }
}

TEST_F(AdapterIdentity, WhetherTheOptionsCanBeChanged)
{
    TOLVA::NIC_INFO NicInfo = Adapter();
    NicInfo.sNicPci = L"PCI\\DEV_X";
    bool bAnswer = true;
    const auto Ask = [&] {
        const bool bRc = TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer);
        return Show(bRc, std::exchange(bAnswer, true));
    };
    for (const auto& [first, second] : {std::pair(StringData(L"pci\\dev_x"), StringData(L"PCI\\DEV_X")),
                                        {StringData(L"PCI\\DEV_X", REG_EXPAND_SZ), StringData(L"PCI\\DEV_XY")}})
    {
        const RegistryKeyScope key(DEVICE_CLASS_KEY);
        key.Set(L"a", L"DeviceInstance", first);
        key.Set(L"b", L"DeviceInstance", second);
        Tell(Show(first, second), Ask);
    }
    Tell("without device classes", Ask);
}

} // namespace
