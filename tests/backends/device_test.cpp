#include <initguid.h>

#include <atomic>
#include <thread>

#include <support/fakes/platform_test.h>
#include <support/platform/handles.h>

using namespace testing_support;

namespace
{

class Device : public PlatformTest
{
protected:
    Device()
    {
        NicInfo.sNicPci = L"PCI\\DEV_X";
        NicInfo.sNicEnum = L"0007";
    }
    ~Device() override { EXPECT_EQ(0, iModules) << "a module is still loaded"; }

    TOLVA::NIC_INFO NicInfo = Adapter();
};

using Change = bool (*)(const TOLVA::NIC_INFO&);

TEST_F(Device, EachStepOfAStateChangeCanFail)
{
    for (const Change change : {&TOLVA::EnableAdapter, &TOLVA::DisableAdapter})
    {
        for (const char* pszFunction : {"", "SetupDiGetClassDevs", "SetupDiEnumDeviceInfo",
                                        "SetupDiSetClassInstallParams", "SetupDiCallClassInstaller"})
        {
            codes[pszFunction] = {1234};
            Tell(Show("failing:", pszFunction), [&] { return change(NicInfo); });
            codes.clear();
        }
    }
    Tell("state 2 of member 5", [] { return TOLVA::AdapterStateChange(2, 5, reinterpret_cast<HDEVINFO>(77)); });
}

TEST_F(Device, HardwareAddressIsWrittenBeforeTheRestart)
{
    const unsigned char BYTES[] = {0, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    const auto Set = [&](const std::string& sTitle) {
        const RegistryKeyScope key(std::wstring(CLASS_KEY) + L"\\0007");
        const auto set = [&] {
            const bool bRc = TOLVA::SetHardwareAddress(NicInfo, TOLVA::HARDWARE_ADDRESS(BYTES, 6));
            return Show(bRc, key.Get(L"", L"NetworkAddress"));
        };
        Tell(sTitle, set);
    };
    Set("set");
    codes["SetupDiCallClassInstaller"] = {1};
    Set("not stopped");
    codes["SetupDiCallClassInstaller"] = {TRUE_ANSWER, 1};
    Set("not started");
    iFailWrite = 1;
    Set("not written");
}

TEST_F(Device, OptionsAreTheDevicesPropertySheet)
{
    for (const char* pszMissing : {"DEVMGR.DLL", "DeviceProperties_RunDLLW", "nothing"})
        InNewProcess(pszMissing, [&] {
            missing = {pszMissing};
            for (int i = 0; i < 2; ++i)
                Tell("show", [&] { return TOLVA::ChangeAdapterOptions(NicInfo); });
        });
    // The last process has freed the module at its end.
    EXPECT_THAT(trace.Lines(),
                testing::ElementsAre("[V] TOLVA::Wrap_DEVMGR_DLL::~Wrap_DEVMGR_DLL : FreeLibrary('DEVMGR.DLL')"));
}

TEST_F(Device, ThePropertySheetIsLoadedOnceByTwoThreads)
{
    InNewProcess("", [&] {
        missing = {"DEVMGR.DLL"};
        std::atomic<int> loads = 0;
        const velmor::UniqueToken secondIsThere(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
        const auto load = PATCH_IMPORT(LoadLibraryW, [&](auto original, const wchar_t* pszName) {
            if (++loads == 1)
                ::WaitForSingleObject(secondIsThere.Get(), INFINITE);
            ::SetEvent(secondIsThere.Get());
            return original(pszName);
        });
        // It is there, too, when it waits for its turn.
        const auto sleep = PATCH_IMPORT(Sleep, [&](DWORD dwTime) {
            if (loads > 0 && dwTime > 0)
                ::SetEvent(secondIsThere.Get());
            ::SwitchToThread();
        });
        {
            const std::jthread first([&] { TOLVA::ChangeAdapterOptions(NicInfo); });
            const std::jthread second([&] { TOLVA::ChangeAdapterOptions(NicInfo); });
        }
        EXPECT_EQ(1, loads);
    });
}

} // namespace
