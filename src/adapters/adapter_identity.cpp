#include <optional>

#include <adapters/subkey_search.h>
#include <support/operation/adapter_operation.h>
#include <support/registry/registry.h>
#include <support/registry/registry_paths.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

/// The key that holds what Windows knows of the adapter's connection.
velmor::string ConnectionKey(const velmor::string& sNicGuid)
{
    return NETWORK_CONNECTIONS + L"\\" + sNicGuid + L"\\Connection";
}

} // namespace

/// The flag is the last line that the log has of it; there is no "... ending".
bool TOLVA::GetAdapterEnumAndDesc(NIC_INFO& NicInfo)
{
    return RunOperation("TOLVA::GetAdapterEnumAndDesc", [&](const CallFrame& frame) {
        if (NicInfo.sNicGuid.empty())
            return frame.Fail("Bad NIXC GUID"); // "NIXC" is the text that the log's readers know
        frame.Verbose("NicInfo.sNicGuid", NicInfo.sNicGuid);

        const velmor::Registry_System registry;
        std::optional<velmor::string> sSubkey;
        if (!FindSubkey(frame, registry,
                        {.sKey = NETWORK_CLASS,
                         .pszValue = L"NetCfgInstanceId",
                         .pszFound = "Found NetCfgInstanceId",
                         .pszVariable = "sNetCfgInstanceId"},
                        NicInfo.sNicGuid, sSubkey))
            return false;

        const bool bFoundEnum = sSubkey.has_value();
        if (bFoundEnum)
        {
            NicInfo.sNicEnum = *sSubkey;
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
    return RunOnAdapter("TOLVA::GetAdapterIpconfigName", NicInfo, [&](const CallFrame& frame) {
        const velmor::Registry_System registry;
        if (!registry.GetString(ConnectionKey(NicInfo.sNicGuid), L"Name", sIpconfigName))
            return frame.Fail("Get 'Name' failed");
        frame.Verbose("sIpconfigName", sIpconfigName);
        return frame.Succeed();
    });
}
