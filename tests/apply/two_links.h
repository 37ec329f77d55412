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

// The two links of the namespace: how they stand, so that two moments can be compared to the letter, and a change.

/// Takes more than ten steps on each fixture's start.
inline constexpr const char* MANY_STEPS = R"({"adapters": [
    {"adapter": "lan0", "mtu": 1400,
     "ipv4": {"addresses": ["192.0.2.12/24", "192.0.2.11/24"], "gateways": [{"address": "192.0.2.2", "metric": 4}],
              "dnsServers": ["192.0.2.54", "192.0.2.53"], "dnsSuffix": "example.org"},
     "ipv6": {"addresses": ["2001:db8::20/64"]}, "routes": [{"destination": "10.9.0.0/16", "nextHop": "192.0.2.9"}]},
    {"adapter": "lan1", "ipv4": {"addresses": ["198.51.100.9/24"], "netbios": "disabled"}}]})";

/// Addresses and routes of the links, and the resolver's servers.
inline std::string Kernel()
{
    std::string output;
    EXPECT_TRUE(RunUnix("for l in lan0 lan1; do ip -o link show dev $l | grep -o 'mtu [0-9]*'; "
                        "ip -o addr show dev $l scope global | awk '{print $2, $4}'; "
                        "ip route show dev $l | sort; ip -6 route show dev $l | sort; done; cat /etc/resolv.conf",
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
