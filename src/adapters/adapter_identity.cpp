#include <algorithm>
#include <cwchar>
#include <vector>

#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <support/values/text.h>
#include <zelk_nm/tolva.h>

namespace
{

/// The key that holds what Windows knows of the adapter's connection.
velmor::string ConnectionKey(const velmor::string& sNicGuid)
{
    return NETWORK_CONNECTIONS + L"\\" + sNicGuid + L"\\Connection";
}

/// The first subkey of the network class whose instance is the adapter's; a pointer past the end when there is none.
template <class Iterator>
Iterator FindClassSubkey(const CallFrame& frame, const velmor::Registry& registry, const velmor::string& sNicGuid,
                         Iterator begin, Iterator end)
{
    return std::find_if(begin, end, [&](const velmor::string& sSubKey) {
        velmor::string sNetCfgInstanceId;
        if (!registry.GetString(NETWORK_CLASS + L"\\" + sSubKey, L"NetCfgInstanceId", sNetCfgInstanceId))
            return false;
        frame.Verbose("Found NetCfgInstanceId", "sNetCfgInstanceId", sNetCfgInstanceId);
        return velmor::EqualIgnoringCase(sNetCfgInstanceId, sNicGuid);
    });
}

} // namespace

/// Ends with the flag alone, without an "... ending" line. That is meant.
bool TOLVA::GetAdapterEnumAndDesc(NIC_INFO& NicInfo)
{
    return RunOperation("TOLVA::GetAdapterEnumAndDesc", [&](const CallFrame& frame) {
        if (NicInfo.sNicGuid.empty())
            return frame.Fail("Bad NIXC GUID"); // "NIXC" is the text that the log's readers know
        frame.Verbose("NicInfo.sNicGuid", NicInfo.sNicGuid);

        const velmor::Registry_System registry;
        std::vector<velmor::string> subkeys;
        if (!registry.EnumerateKeys(L"SYSTEM\\" + NETWORK_CLASS, subkeys))
            return frame.FailAs("... ending( velmor::Registry_System::EnumerateKeys failed) ");

        const auto found = FindClassSubkey(frame, registry, NicInfo.sNicGuid, subkeys.begin(), subkeys.end());
        const bool bFoundEnum = found != subkeys.end();
        if (bFoundEnum)
        {
            NicInfo.sNicEnum = *found;
            frame.Verbose("Found correct enum", "NicInfo.sNicEnum", NicInfo.sNicEnum);
            const velmor::string sKey = NETWORK_CLASS + L"\\" + NicInfo.sNicEnum;
            if (registry.GetString(sKey, L"DriverDesc", NicInfo.sNicDesc))
                frame.Verbose("NicInfo.sNicDesc", NicInfo.sNicDesc);
            velmor::string sInfPath;
            if (registry.GetString(sKey, L"InfPath", sInfPath))
                frame.Verbose("sInfPath", sInfPath);
        }
        frame.Verbose("bFoundEnum", bFoundEnum);
        return bFoundEnum;
    });
}

bool TOLVA::GetAdapterPCI(NIC_INFO& NicInfo)
{
    return RunOperation("TOLVA::GetAdapterPCI", [&](const CallFrame& frame) {
        if (NicInfo.sNicEnum.empty())
            return frame.Fail("Bad NIC Enum");
        frame.Verbose("NicInfo.sNicEnum", NicInfo.sNicEnum);

        const velmor::Registry_System registry;
        if (!registry.GetString(NETWORK_CLASS + L"\\" + NicInfo.sNicEnum, L"DeviceInstanceID", NicInfo.sNicPci))
        {
            frame.Information("'DeviceInstanceID' not found");
            if (!registry.GetString(ConnectionKey(NicInfo.sNicGuid), L"PnpInstanceID", NicInfo.sNicPci))
                return frame.FailAs("... ending( Get 'PnpInstanceID' failed)");
        }
        frame.Information("NicInfo.sNicPci", NicInfo.sNicPci);
        return frame.Succeed();
    });
}

bool TOLVA::GetAdapterIpconfigName(const NIC_INFO& NicInfo, velmor::string& sIpconfigName)
{
    return RunOperation("TOLVA::GetAdapterIpconfigName", [&](const CallFrame& frame) {
        if (NicInfo.sNicGuid.empty())
            return frame.Fail("Bad NIC GUID");
        const velmor::Registry_System registry;
        if (!registry.GetString(ConnectionKey(NicInfo.sNicGuid), L"Name", sIpconfigName))
            return frame.Fail("Get 'Name' failed");
        frame.Verbose("sIpconfigName", sIpconfigName);
        return frame.Succeed();
    });
}
