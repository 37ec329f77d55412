#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <e2e/unix_command.h>
#include <state/platform/registry.h>
#include <state/platform/registry_keys.h>
#include <state/platform/utf8.h>
#include <state/reading/read_machine.h>
#include <support/registry_scope.h>

// The two links of the namespace: how they stand, so that two moments can be compared to the letter, and a change.

/// Takes more than ten steps on each fixture's start.
inline constexpr const char* MANY_STEPS = R"({"adapters": [
    {"adapter": "lan0", "mtu": 1400,
     "ipv4": {"addresses": ["192.0.2.12/24", "192.0.2.11/24"], "gateways": [{"address": "192.0.2.2", "metric": 4}],
              "dnsServers": ["192.0.2.54", "192.0.2.53"], "dnsSuffix": "example.org"},
     "ipv6": {"addresses": ["2001:db8::20/64"]}, "routes": [{"destination": "10.9.0.0/16", "nextHop": "192.0.2.9"}]},
    {"adapter": "lan1", "ipv4": {"addresses": ["198.51.100.9/24"], "netbios": "disabled"}}]})";

/// Makes the links known to the registry as adapters that have nothing yet. Gives the GUID of the first one.
inline std::wstring RegisterLinks()
{
    std::wstring first;
    for (const zelk::Adapter& adapter : zelk::ReadMachine().adapters)
    {
        const std::string link = adapter.friendlyName.value_or("");
        if (!link.starts_with("lan"))
            continue;
        const std::wstring guid = zelk::FromUtf8(adapter.guid->ToText());
        testing_support::SetValue(zelk::CONNECTIONS + (L'\\' + guid) + L"\\Connection", L"Name",
                                  testing_support::StringData(L"Connection " + zelk::FromUtf8(link)));
        testing_support::SetValue(zelk::IPV4_INTERFACES + guid, L"EnableDHCP", testing_support::DwordData(0));
        if (link == "lan0")
            first = guid;
    }
    return first;
}

/// A variable of the environment for one scope, by which a stand-in does something else with commands that hold the
/// text.
class StandIn
{
public:
    StandIn(const std::string& variable, const std::string& text) : m_variable(variable)
    {
        ::SetEnvironmentVariableA(variable.c_str(), text.c_str());
    }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn() { ::SetEnvironmentVariableA(m_variable.c_str(), nullptr); }

private:
    std::string m_variable;
};

/// Addresses and routes of the links, but for the kernel's own of IPv6, which come some time after a link; and the
/// resolver's servers.
inline std::string Kernel()
{
    std::string output;
    EXPECT_TRUE(RunUnix(
        "for l in lan0 lan1; do ip -o link show dev $l | grep -o 'mtu [0-9]*'; "
        "ip -o addr show dev $l scope global | awk '{print $2, $4}'; "
        "ip route show dev $l | sort; ip -6 route show dev $l | grep -v ^fe80::/ | sort; done; cat /etc/resolv.conf",
        output));
    return output;
}

/// Every value of the keys that hold settings, to the letter.
inline std::string Registry()
{
    std::ostringstream text;
    std::vector<std::wstring> keys = {zelk::PERSISTENT_ROUTES};
    for (const zelk::Adapter& adapter : zelk::ReadMachine().adapters)
        for (const wchar_t* start : {zelk::IPV4_INTERFACES, zelk::IPV6_INTERFACES, zelk::NETBIOS_INTERFACES})
            keys.push_back(start + zelk::FromUtf8(adapter.guid ? adapter.guid->ToText() : ""));
    for (const std::wstring& key : keys)
    {
        std::vector<zelk::RegistryValue> values;
        zelk::ReadValues(key, values);
        std::ranges::sort(values, {}, &zelk::RegistryValue::name);
        for (const zelk::RegistryValue& value : values)
        {
            if (value.name.starts_with(L"Dhcp"))
                continue; // stay when the lease is given back
            text << zelk::ToUtf8(key + L' ' + value.name) << ' ' << value.type;
            for (const std::byte part : value.data)
                text << ' ' << std::to_integer<int>(part);
            text << '\n';
        }
    }
    return text.str();
}
