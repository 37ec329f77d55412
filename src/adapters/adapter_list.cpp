#include <adapters/wrap_ip_interface_info.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

namespace
{

constexpr const char* LIST_NAME = "TOLVA::GetAdapterList";

} // namespace

bool TOLVA::GetAdapterList(std::vector<NIC_INFO>& NicList)
{
    return RunOperation(LIST_NAME, [&](const CallFrame& frame) {
        Wrap_IP_INTERFACE_INFO table;
        if (!table.GetAdapterList(NicList))
            return frame.FailAs("... ending(Failed to get adapter list)");
        for (NIC_INFO& NicInfo : NicList)
            CompleteAdapter(NicInfo);
        frame.Information("uiNicCount", NicList.size());
        return frame.Succeed();
    });
}

/// One element of the list. A step that fails ends the completion of this element, but for the friendly name, on which
/// no later step depends. The texts have their lone closing parentheses in every log that was ever written.
void TOLVA::CompleteAdapter(NIC_INFO& NicInfo)
{
    const CallFrame frame = CallFrame::WithoutStart(LIST_NAME);
    if (!GetAdapterEnumAndDesc(NicInfo))
        return frame.Warning("TOLVA::GetAdapterDesc failed)");
    if (!GetAdapterFriendlyName(NicInfo))
        frame.Warning("TOLVA::GetAdapterFriendlyName failed)");
    if (!GetAdapterPCI(NicInfo))
        return frame.Warning("TOLVA::GetAdapterPci failed)");
    if (!GetAdapterType(NicInfo))
        return frame.Warning("TOLVA::GetAdapterType failed)");

    HARDWARE_ADDRESS HwAddr;
    if (!GetHardwareAddress(NicInfo, HwAddr))
        return frame.Warning("TOLVA::GetHardwareAddress failed)");
    NicInfo.sNicHwAddr = HwAddr;

    // Asked for its trace alone: the answer is no part of the record.
    bool bCanChangeOptions = false;
    if (!CanChangeAdapterOptions(NicInfo, bCanChangeOptions))
        frame.Warning("TOLVA::CanChangeAdapterOptions failed)");
}
