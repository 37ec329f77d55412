#include <initguid.h>

#include <atomic>
#include <thread>

#include "backends_test.h"

using namespace testing_support;

namespace
{

const HDEVINFO DEVICE_SET = reinterpret_cast<HDEVINFO>(77);

/// A device installer with one device. What another set or device is asked for shows in the calls.
class Device : public BackendTest
{
protected:
    Device()
    {
        NicInfo.sNicPci = L"PCI\\DEV_X";
        NicInfo.sNicEnum = L"0007";
        ADD_PATCH(patches, SetupDiGetClassDevsW,
                  [this](const GUID* pClass, const wchar_t* pszEnumerator, HWND hwnd, DWORD dwFlags) {
                      EXPECT_EQ(TOLVA::NIC_DEVICECLASS_GUID, *pClass);
                      EXPECT_EQ(nullptr, hwnd);
                      return Did("SetupDiGetClassDevs", DEVICE_SET, velmor::string(pszEnumerator).narrow_c_str(),
                                 dwFlags)
                                 ? DEVICE_SET
                                 : INVALID_HANDLE_VALUE;
                  });
        ADD_PATCH(patches, SetupDiEnumDeviceInfo,
                  [this](HDEVINFO hSet, DWORD dwMember, SP_DEVINFO_DATA* pDevice) -> BOOL {
                      pDevice->DevInst = 99;
                      return Did("SetupDiEnumDeviceInfo", hSet, "member", dwMember, pDevice->cbSize);
                  });
        ADD_PATCH(
            patches, SetupDiSetClassInstallParamsW,
            [this](HDEVINFO hSet, SP_DEVINFO_DATA* pDevice, SP_CLASSINSTALL_HEADER* pHeader, DWORD dwSize) -> BOOL {
                const auto& change = *reinterpret_cast<const SP_PROPCHANGE_PARAMS*>(pHeader);
                return Did("SetupDiSetClassInstallParams", hSet, "change", pDevice->DevInst, dwSize, pHeader->cbSize,
                           pHeader->InstallFunction, change.StateChange, change.Scope, change.HwProfile);
            });
        ADD_PATCH(patches, SetupDiCallClassInstaller,
                  [this](DI_FUNCTION function, HDEVINFO hSet, SP_DEVINFO_DATA* pDevice) -> BOOL {
                      return Did("SetupDiCallClassInstaller", hSet, "install", pDevice->DevInst, function);
                  });
        ADD_PATCH(patches, SetupDiDestroyDeviceInfoList, [this](HDEVINFO hSet) -> BOOL {
            ::SetLastError(ERROR_INVALID_HANDLE);
            return Did("", hSet, "destroy");
        });
    }

    template <class... Values>
    bool Did(const char* pszFunction, HDEVINFO hSet, const Values&... values)
    {
        EXPECT_EQ(DEVICE_SET, hSet);
        return Called(pszFunction, Joined(Joined(values, ' ')...)) == TRUE_ANSWER;
    }
    /// The first of the calls that give the device a state, and the last.
    static std::string Steps(int state, int count = 4)
    {
        const std::string STEPS[] = {"PCI\\DEV_X 16 ; ", "member 0 32 ; ",
                                     Joined("change 99 20 8 18 ", state, " 1 0 ; "), "install 99 18 ; "};
        std::string sSteps;
        for (int i = 0; i < count; ++i)
            sSteps += STEPS[i];
        return count > 1 ? sSteps + "destroy ; " : sSteps;
    }

    TOLVA::NIC_INFO NicInfo = Adapter();
};

TEST_F(Device, EachStepOfAStateChangeCanFail)
{
    const char* const FUNCTIONS[] = {"SetupDiGetClassDevs", "SetupDiEnumDeviceInfo", "SetupDiSetClassInstallParams",
                                     "SetupDiCallClassInstaller"};
    for (const auto& [iState, sOperation] : {std::pair<int, std::string>(1, "EnableAdapter"), {2, "DisableAdapter"}})
        for (int failing = 0; failing <= 4; ++failing)
        {
            SCOPED_TRACE(testing::Message() << sOperation << ' ' << failing);
            const std::string sFunction = failing < 4 ? FUNCTIONS[failing] : "none";
            codes = {{sFunction, {1234}}};
            EXPECT_EQ(failing == 4, iState == 1 ? TOLVA::EnableAdapter(NicInfo) : TOLVA::DisableAdapter(NicInfo));
            EXPECT_EQ(Steps(iState, std::min(failing + 1, 4)), Asked());
            EXPECT_TRUE(trace.Has("[V] TOLVA::" + sOperation + " : NicInfo.sNicPci = \"PCI\\DEV_X\""));
            std::string sExpected;
            if (failing < 4)
                sExpected = "[E] TOLVA::" + (failing == 0 ? sOperation : "AdapterStateChange") + " : ... ending( " +
                            sFunction + " failed ) : dwLastError = 1234\n";
            if (failing > 0 && failing < 4)
                sExpected += "[E] TOLVA::" + sOperation + " : ... ending( AdapterStateChange failed )\n";
            EXPECT_EQ(sExpected, trace.Complaints());
        }
    EXPECT_TRUE(TOLVA::AdapterStateChange(2, 5, DEVICE_SET));
    EXPECT_EQ("member 5 32 ; change 99 20 8 18 2 1 0 ; install 99 18 ; ", Asked());
}

TEST_F(Device, HardwareAddressIsWrittenBeforeTheRestart)
{
    const unsigned char BYTES[] = {0, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    const auto Set = [&](const wchar_t* pszPci, const Codes& forced, const std::string& sCalls,
                         const std::string& sFailure) {
        SCOPED_TRACE(sFailure);
        const RegistryKeyScope key(std::wstring(CLASS_KEY) + L"\\0007");
        NicInfo.sNicPci = pszPci;
        codes = forced;
        EXPECT_EQ(sFailure.empty(), TOLVA::SetHardwareAddress(NicInfo, TOLVA::HARDWARE_ADDRESS(BYTES, 6)));
        EXPECT_EQ(sCalls, Asked());
        EXPECT_EQ(sCalls.empty() ? RegistryData() : StringData(L"00-1A-2B-3C-4D-5E"), key.Get(L"", L"NetworkAddress"));
        EXPECT_EQ(sFailure.empty() ? "[V] TOLVA::SetHardwareAddress : ... ending"
                                   : "[E] TOLVA::SetHardwareAddress : ... ending( " + sFailure + " )",
                  trace.Lines().back());
    };
    Set(L"PCI\\DEV_X", {}, Steps(2) + Steps(1), "");
    Set(L"PCI\\DEV_X", {{"SetupDiCallClassInstaller", {1}}}, Steps(2), "DisableAdapter failed");
    Set(L"PCI\\DEV_X", {{"SetupDiCallClassInstaller", {TRUE_ANSWER, 1}}}, Steps(2) + Steps(1), "EnableAdapter failed");
    Set(L"", {}, "", "Bad NIC PCI ID");
    {
        const auto patch = PATCH_IMPORT(RegSetValueExW, [](auto...) -> LSTATUS { return ERROR_ACCESS_DENIED; });
        Set(L"PCI\\DEV_X", {}, "", "Set 'NetworkAddress' failed");
    }
    NicInfo.sNicEnum = L"";
    Set(L"", {}, "", "Bad NIC Enum");
    EXPECT_TRUE(trace.Has("[V] TOLVA::SetHardwareAddress : sHwAddr = \"00-1A-2B-3C-4D-5E\""));
}

TEST_F(Device, PropertySheet)
{
    const std::string WRAP = "TOLVA::Wrap_DEVMGR_DLL::";
    const std::string FIND = "load DEVMGR.DLL; DeviceProperties_RunDLLW; ";
    const std::string SHOW = "show /DeviceId PCI\\DEV_X 0; ";
    const struct
    {
        const char* pszMissing;
        std::string sCalls, sComplaint;
    } rows[] = {
        {"DEVMGR.DLL", "load DEVMGR.DLL; ", "LoadLibrary('DEVMGR.DLL') failed : dwLastError = 126\n"},
        {"DeviceProperties_RunDLLW", FIND, "GetProcAddress('DeviceProperties_RunDLLW') failed : dwLastError = 127\n"},
        {"nothing", FIND + SHOW + SHOW, ""},
    };
    for (const auto& row : rows)
        InNewProcess([&] {
            missing = {row.pszMissing};
            EXPECT_TRUE(TOLVA::ChangeAdapterOptions(NicInfo));
            EXPECT_TRUE(TOLVA::ChangeAdapterOptions(NicInfo));
            EXPECT_EQ(row.sCalls, Asked());
            EXPECT_EQ(row.sComplaint.empty() ? "" : "[E] " + WRAP + "Wrap_DEVMGR_DLL : " + row.sComplaint,
                      trace.Complaints());
        });
    trace.ExpectLines({"[V] " + WRAP + "~Wrap_DEVMGR_DLL : FreeLibrary('DEVMGR.DLL')"});

    trace.Empty();
    NicInfo.sNicPci = L"";
    EXPECT_FALSE(TOLVA::EnableAdapter(NicInfo));
    EXPECT_FALSE(TOLVA::DisableAdapter(NicInfo));
    EXPECT_FALSE(TOLVA::ChangeAdapterOptions(NicInfo));
    EXPECT_EQ("[E] TOLVA::EnableAdapter : ... ending( Bad NIC PCI ID )\n"
              "[E] TOLVA::DisableAdapter : ... ending( Bad NIC PCI ID )\n"
              "[E] TOLVA::ChangeAdapterOptions : ... ending( Bad NIC PCI ID )\n",
              trace.Complaints());
    EXPECT_EQ("", Asked());
}

TEST_F(Device, ThePropertySheetIsLoadedOnceByTwoThreads)
{
    InNewProcess([&] {
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
        const auto sleep = PATCH_IMPORT(Sleep, [&](auto original, DWORD dwTime) {
            if (loads > 0 && dwTime > 0)
                ::SetEvent(secondIsThere.Get());
            original(dwTime);
        });
        {
            const std::jthread first([&] { TOLVA::ChangeAdapterOptions(NicInfo); });
            const std::jthread second([&] { TOLVA::ChangeAdapterOptions(NicInfo); });
        }
        EXPECT_EQ(1, loads);
    });
}

/// With the back end that this system really has.
TEST_F(BackendTest, TheFacadeReportsTheBackEndsAnswer)
{
    std::vector<TOLVA::ROUTE_INFO> list;
    std::vector<TOLVA::ASSOC_IP_ADDR> addressList;
    ULONG ulSize = 0;
    for (const auto& [pszGuid, sEnd] : {std::pair<const wchar_t*, std::string>(GUID_A, " : ... ending : bRc = true"),
                                        {L"", " : ... ending : bRc = false"}})
    {
        EXPECT_EQ(*pszGuid != L'\0', TOLVA::GetAdapterRoutes(Adapter(pszGuid), list));
        EXPECT_EQ("[V] TOLVA::GetAdapterRoutes" + sEnd, trace.Lines().back());
        EXPECT_EQ(*pszGuid != L'\0', TOLVA::GetAdaptersIpAddrs(Adapter(pszGuid), addressList));
        EXPECT_EQ("[V] TOLVA::GetAdaptersIpAddrs" + sEnd, trace.Lines().back());
    }
    EXPECT_FALSE(TOLVA::AddAdapterRoute(Adapter(L""), Route("10.0.0.0", 8, "10.0.0.1", 1)));
    EXPECT_EQ("[V] TOLVA::AddAdapterRoute : ... ending : bRc = false", trace.Lines().back());
    EXPECT_EQ(122U, TOLVA::GetTcp6Table(nullptr, ulSize, true));
    EXPECT_EQ("[V] TOLVA::GetTcp6Table : ... ending : ulRc = 122", trace.Lines().back());
    EXPECT_LT(0U, ulSize);
}

} // namespace
