#include "verbs/settings_commands.h"

#include "verbs/common_verbs.h"

namespace zelkctl
{

void AddSettingsCommands(Command tool)
{
    Command noun = tool.AddNoun({"settings", "Further settings of an adapter", "settings show lan0 --json"});
    AddAdapterPartVerb(noun,
                       {"show", "Show MTU, metrics, DNS suffix, private addressing, NetBIOS and speed of one adapter",
                        "settings show lan0"},
                       {"ipv4.dnsSuffix", "ipv4.configured.dnsSuffix", "ipv4.mtu", "ipv4.configured.mtu", "ipv4.metric",
                        "ipv4.configured.metric", "ipv6.enabled", "ipv6.mtu", "ipv6.configured.mtu", "ipv6.metric",
                        "ipv6.configured.metric", "ipv4.autoconfiguration", "ipv4.netbios", "ipv4.configured.netbios",
                        "driver.speedDuplex", "transmitSpeed", "receiveSpeed"});
}

} // namespace zelkctl
