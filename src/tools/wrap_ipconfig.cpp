#include <tools/wrap_ipconfig.h>

#include <tools/captured_command.h>

namespace
{

// A failed command ends at verbose level, unlike netsh's: at the first level it leaves no error line. That is meant.
constexpr SystemCommand RENEW4 = {"ipconfig /renew returned",
                                  "... ending( ipconfig /renew failed )",
                                  TRACE_VERBOSE,
                                  {L"ipconfig", L"/renew", SystemCommand::CONNECTION}};
constexpr SystemCommand RENEW6 = {"ipconfig /renew6 returned",
                                  "... ending( ipconfig /renew6 failed )",
                                  TRACE_VERBOSE,
                                  {L"ipconfig", L"/renew6", SystemCommand::CONNECTION}};
constexpr SystemCommand RELEASE4 = {"ipconfig /release returned",
                                    "... ending( ipconfig /release failed )",
                                    TRACE_VERBOSE,
                                    {L"ipconfig", L"/release", SystemCommand::CONNECTION}};
constexpr SystemCommand RELEASE6 = {"ipconfig /release6 returned",
                                    "... ending( ipconfig /release6 failed )",
                                    TRACE_VERBOSE,
                                    {L"ipconfig", L"/release6", SystemCommand::CONNECTION}};

bool RunIpconfig(const char* pszName, const TOLVA::NIC_INFO& NicInfo, const SystemCommand& ipconfig)
{
    return RunOperation(pszName, [&](const CallFrame& frame) {
        CapturedCommand command(frame);
        return command.Prepare(NicInfo) && command.Run(ipconfig);
    });
}

} // namespace

bool Wrap_ipconfig::RenewDhcp4(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::RenewDhcp4", NicInfo, RENEW4);
}

bool Wrap_ipconfig::RenewDhcp6(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::RenewDhcp6", NicInfo, RENEW6);
}

bool Wrap_ipconfig::ReleaseDhcp4(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::ReleaseDhcp4", NicInfo, RELEASE4);
}

bool Wrap_ipconfig::ReleaseDhcp6(const TOLVA::NIC_INFO& NicInfo)
{
    return RunIpconfig("Wrap_ipconfig::ReleaseDhcp6", NicInfo, RELEASE6);
}
