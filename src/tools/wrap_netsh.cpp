#include <tools/wrap_netsh.h>

#include <tools/captured_command.h>

namespace
{

constexpr auto CONNECTION = SystemCommand::CONNECTION;
constexpr auto ADDRESS = SystemCommand::ADDRESS;
constexpr auto NETMASK = SystemCommand::NETMASK;

/// The two forms of one change.
struct CommandPair
{
    SystemCommand ipv4;
    SystemCommand ipv6;

    [[nodiscard]] const SystemCommand& For(const velmor::ip_address& address) const noexcept
    {
        return address.is_ipv4() ? ipv4 : ipv6;
    }
};

// The two families' commands differ: only IPv4's takes a mask, and what is set by it is kept; the IPv6 forms are given
// no prefix length, and say that the change is to be kept.

constexpr CommandPair ADD_ADDRESS = {
    {.words = {L"netsh", L"interface", L"ipv4", L"set", L"address", CONNECTION, L"static", ADDRESS, NETMASK}},
    {.words = {L"netsh", L"interface", L"ipv6", L"set", L"address", CONNECTION, ADDRESS, L"unicast", L"infinite",
               L"infinite", L"persistent"}}};

constexpr CommandPair REMOVE_ADDRESS = {
    {.words = {L"netsh", L"interface", L"ipv4", L"delete", L"address", CONNECTION, ADDRESS}},
    {.words = {L"netsh", L"interface", L"ipv6", L"delete", L"address", CONNECTION, ADDRESS, L"persistent"}}};

// In the trace the command is "dnsserver", as readers of the log know it; netsh's own word is "dnsservers".
constexpr CommandPair SET_DNS_SERVER = {
    {.words = {L"netsh", L"interface", L"ipv4", L"set", L"dnsservers", CONNECTION, L"static", ADDRESS},
     .pszName = L"netsh interface ipv4 set dnsserver"},
    {.words = {L"netsh", L"interface", L"ipv6", L"set", L"dnsservers", CONNECTION, L"static", ADDRESS},
     .pszName = L"netsh interface ipv6 set dnsserver"}};

/// `pszVariable` names the address in the trace.
bool RunNetsh(const char* pszName, const TOLVA::NIC_INFO& NicInfo, const CommandPair& commands, const char* pszVariable,
              const velmor::ip_address& address, unsigned char prefix = 0)
{
    return RunOperation(pszName, [&](const CallFrame& frame) {
        CapturedCommand command(frame);
        if (!command.Prepare(NicInfo))
            return false;
        // An address that could not be formed has no text: the exception ends here, as a traced
        // failure.
        const velmor::string sAddress = address;
        frame.Information(pszVariable, sAddress);
        const SystemCommand& chosen = commands.For(address);
        if (!chosen.Uses(NETMASK))
            return command.Run(chosen, sAddress);
        return command.Run(chosen, sAddress, TOLVA::ConvertPrefixToNetmask(prefix));
    });
}

} // namespace

bool Wrap_netsh::AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    return RunNetsh("Wrap_netsh::AddIpAddr", NicInfo, ADD_ADDRESS, "sIpAddress", IpAddr.IpAddress, IpAddr.SubnetPrefix);
}

bool Wrap_netsh::RemoveIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr)
{
    return RunNetsh("Wrap_netsh::RemoveIpAddr", NicInfo, REMOVE_ADDRESS, "sIpAddress", IpAddr.IpAddress);
}

bool Wrap_netsh::SetDnsAddr(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& IpDns)
{
    return RunNetsh("Wrap_netsh::SetDnsAddr", NicInfo, SET_DNS_SERVER, "sIpDns", IpDns);
}
