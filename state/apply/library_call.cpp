#include <state/apply/library_call.h>

#include <zelk_nm/tolva.h>

#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

velmor::string TextOf(const std::optional<std::string>& text)
{
    return FromUtf8(text.value_or(""));
}

TOLVA::NIC_INFO NicInfoOf(const Adapter& adapter)
{
    TOLVA::NIC_INFO info;
    info.sNicFriendlyName = TextOf(adapter.friendlyName);
    info.sNicEnum = TextOf(adapter.classKey);
    info.sNicGuid = FromUtf8(adapter.guid ? adapter.guid->ToText() : "");
    info.sNicName = TextOf(DeviceNameOf(adapter));
    info.sNicPci = TextOf(adapter.deviceInstance);
    return info;
}

bool CallForMachine(const LibraryCall& call)
{
    const velmor::string argument = FromUtf8(call.argument);
    switch (call.operation)
    {
    case LibraryOperation::SET_COMPUTER_NAME: return TOLVA::SetComputerNameW(argument);
    case LibraryOperation::SET_PRIMARY_DNS_SUFFIX: return TOLVA::SetPrimaryDnsSuffix(argument);
    case LibraryOperation::SET_WORKGROUP_NAME: return TOLVA::SetWorkgroupName(argument);
    default: return false;
    }
}

} // namespace

bool Call(const LibraryCall& call, const Adapter* adapter)
{
    if (adapter == nullptr)
        return CallForMachine(call);
    const TOLVA::NIC_INFO info = NicInfoOf(*adapter);
    switch (call.operation)
    {
    case LibraryOperation::ENABLE_ADAPTER: return TOLVA::EnableAdapter(info);
    case LibraryOperation::DISABLE_ADAPTER: return TOLVA::DisableAdapter(info);
    case LibraryOperation::SET_HARDWARE_ADDRESS:
    {
        const auto address = HardwareAddress::Parse(call.argument).value_or(HardwareAddress());
        const auto bytes = address.Bytes();
        return TOLVA::SetHardwareAddress(
            info, bytes.empty() ? TOLVA::HARDWARE_ADDRESS()
                                : TOLVA::HARDWARE_ADDRESS(bytes.data(), static_cast<unsigned int>(bytes.size())));
    }
    default: return false;
    }
}

} // namespace zelk
