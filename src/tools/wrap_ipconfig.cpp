#include <tools/wrap_ipconfig.h>

#include <tools/captured_command.h>

namespace
{

bool RunIpconfig(const char* pszName, const TOLVA::NIC_INFO& NicInfo, const wchar_t* pszSwitch)
{
    // A failure is no error line of this driver, unlike netsh's: the operation that asked for the change traces one.
    const SystemCommand ipconfig = {.words = {L"ipconfig", pszSwitch, SystemCommand::CONNECTION},
                                    .failedLevel = TRACE_VERBOSE,
                                    .bNamedInFailure = true};
    return RunOperation(pszName, [&](const CallFrame& frame) {
        CapturedCommand command(frame);
        return command.Prepare(NicInfo) && command.Run(ipconfig);
    });
}

} // namespace

bool Wrap_ipconfig::RenewDhcp4(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::RenewDhcp4", NicInfo, L"/renew");
}

bool Wrap_ipconfig::RenewDhcp6(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::RenewDhcp6", NicInfo, L"/renew6");
}

bool Wrap_ipconfig::ReleaseDhcp4(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::ReleaseDhcp4", NicInfo, L"/release");
}

bool Wrap_ipconfig::ReleaseDhcp6(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::ReleaseDhcp6", NicInfo, L"/release6");
}
