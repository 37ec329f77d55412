#include "verbs/settings_commands.h"

#include <optional>
#include <string>
#include <vector>

#include "adapters/adapter.h"
#include "answer/cell_text.h"
#include "answer/failure.h"
#include "system/number.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

std::uint32_t ParseUnsigned(const std::string& sName, const std::string& sText)
{
    const auto ulValue = ParseNumber(sText);
    if (!ulValue)
        throw UsageError(sName, Quoted(sText) + " is not a number");
    return *ulValue;
}

zelk::AutomaticOr<std::uint32_t> ParseMetric(const std::string& sText)
{
    if (sText == "automatic")
        return zelk::Automatic();
    return ParseUnsigned("--metric", sText);
}

zelk::NetbiosSetting ParseNetbios(const std::string& sText)
{
    if (sText == "on")
        return zelk::NetbiosSetting::ENABLED;
    return sText == "off" ? zelk::NetbiosSetting::DISABLED : zelk::NetbiosSetting::DHCP;
}

/// What was given on the command line; each text is empty when it was not given.
struct GivenSettings
{
    std::string sMtu;
    std::string sMetric;
    std::string sNetbios;
    std::string sIpv6;
    std::optional<std::string> dnsSuffix;

    void Set(const std::vector<zelk::Family>& families, zelk::DesiredAdapter& desired) const
    {
        for (const zelk::Family family : families)
        {
            if (!sMtu.empty())
                desired.Of(family).mtu = ParseUnsigned("--mtu", sMtu);
            if (!sMetric.empty())
                desired.Of(family).metric = ParseMetric(sMetric);
        }
        if (!sNetbios.empty())
            desired.ipv4.netbios = ParseNetbios(sNetbios);
        if (!sIpv6.empty())
            desired.ipv6.enabled = sIpv6 == "on";
        desired.ipv4.dnsSuffix = dnsSuffix;
    }
};

void AddShow(Command noun)
{
    AddAdapterPartVerb(noun,
                       {"show", "Show MTU, metrics, DNS suffix, private addressing, NetBIOS and speed of one adapter",
                        "settings show lan0"},
                       {"ipv4.dnsSuffix", "ipv4.configured.dnsSuffix", "ipv4.mtu", "ipv4.configured.mtu", "ipv4.metric",
                        "ipv4.configured.metric", "ipv6.enabled", "ipv6.mtu", "ipv6.configured.mtu", "ipv6.metric",
                        "ipv6.configured.metric", "ipv4.autoconfiguration", "ipv4.netbios", "ipv4.configured.netbios",
                        "driver.speedDuplex", "transmitSpeed", "receiveSpeed"});
}

void AddSet(Command noun)
{
    Command verb = noun.AddVerb({"set", "Set further settings of one adapter", "settings set lan0 --mtu 1400"});
    const auto adapter = AddAdapterIn(verb);
    const auto mtu = verb.AddOption({"--mtu", "The largest packet, in bytes", "N"});
    const auto metric = verb.AddOption({"--metric", "The metric of the interface, or \"automatic\"", "N|automatic"});
    const auto families = AddFamilyFlags(verb);
    const auto suffix = verb.AddOption({"--dns-suffix", "The DNS suffix of the connection", "DOMAIN"});
    const auto noSuffix = verb.AddFlag("--no-dns-suffix", "Remove the DNS suffix of the connection");
    const auto netbios =
        verb.AddChoice({"--netbios", "NetBIOS over TCP/IP: on, off, or as the DHCP server says", "on|off|dhcp"},
                       {"on", "off", "dhcp"});
    const auto binding = verb.AddChoice({"--bind-ipv6", "Whether the adapter uses IPv6", "on|off"}, {"on", "off"});
    verb.AddRemark("--ipv4 and --ipv6 restrict --mtu and --metric to one family. What is not given remains.");
    MakeStateVerb(verb, [=](const zelk::Machine& machine) {
        GivenSettings given{mtu(), metric(), netbios(), binding(), {}};
        if (noSuffix() || !suffix().empty())
            given.dnsSuffix = noSuffix() ? "" : suffix();
        const zelk::Adapter& found = adapter(machine);
        zelk::DesiredAdapter desired;
        given.Set(families.Of(machine, found), desired);
        if (desired == zelk::DesiredAdapter())
            throw UsageError("settings set", "no setting is given");
        StateChange change =
            ChangeOf(found, std::move(desired), "Adapter " + Quoted(found) + " has the settings given.");
        change.bCanDisconnect = given.sIpv6 == "off";
        return change;
    });
}

} // namespace

void AddSettingsCommands(Command tool)
{
    Command noun = tool.AddNoun({"settings", "Further settings of an adapter", "settings show lan0 --json"});
    AddShow(noun);
    AddSet(noun);
}

} // namespace zelkctl
