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
    info.sNicGuid = FromUtf8(adapter.guid.value_or(Guid()).ToText());
    info.sNicName = TextOf(DeviceNameOf(adapter));
    info.sNicPci = TextOf(adapter.deviceInstance);
    return info;
}

/// The default one, which is the driver's, for an empty text.
TOLVA::HARDWARE_ADDRESS HardwareAddressOf(const std::string& text)
{
    const HardwareAddress address = HardwareAddress::Parse(text).value_or(HardwareAddress());
    const auto bytes = address.Bytes();
    return bytes.empty() ? TOLVA::HARDWARE_ADDRESS()
                         : TOLVA::HARDWARE_ADDRESS(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

} // namespace

bool Call(const LibraryCall& call, const Adapter* adapter)
{
    const TOLVA::NIC_INFO info = adapter != nullptr ? NicInfoOf(*adapter) : TOLVA::NIC_INFO();
    const velmor::string argument = FromUtf8(call.argument);
    switch (call.operation)
    {
    case LibraryOperation::ENABLE_ADAPTER: return TOLVA::EnableAdapter(info);
    case LibraryOperation::DISABLE_ADAPTER: return TOLVA::DisableAdapter(info);
    case LibraryOperation::SET_HARDWARE_ADDRESS:
        return TOLVA::SetHardwareAddress(info, HardwareAddressOf(call.argument));
    case LibraryOperation::SET_COMPUTER_NAME: return TOLVA::SetComputerNameW(argument);
    case LibraryOperation::SET_PRIMARY_DNS_SUFFIX: return TOLVA::SetPrimaryDnsSuffix(argument);
    case LibraryOperation::SET_WORKGROUP_NAME: break;
    }
    return TOLVA::SetWorkgroupName(argument);
}

} // namespace zelk
