#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <state/fields/json.h>

/// A walk over desired states of lan0 and lan1 that can be meant, from a seed. A DHCP client is on the network that the
/// simulated Windows gives to its interface index.
class DesiredWalk
{
public:
    DesiredWalk(unsigned int seed, std::vector<std::uint32_t> indexes) : m_random(seed), m_indexes(std::move(indexes))
    {
    }

    zelk::Json Next()
    {
        zelk::Json adapters = zelk::Json::array();
        for (unsigned int i = 0; i < 2; ++i)
            if (Below(4) != 0)
                adapters.push_back(NextAdapter(i));
        return {{"adapters", adapters}};
    }

private:
    unsigned int Below(unsigned int bound) { return std::uniform_int_distribution(0u, bound - 1)(m_random); }

    zelk::Json NextAdapter(unsigned int number)
    {
        zelk::Json adapter = {{"adapter", "lan" + std::to_string(number)}, {"ipv4", zelk::Json::object()}};
        zelk::Json& ipv4 = adapter["ipv4"];
        const bool client = Below(4) == 0;
        if (client)
            ipv4["dhcp"] = true;
        else
            ipv4["addresses"] = Addresses(number, Below(3) + 1);
        if (Below(3) != 0)
            ipv4["gateways"] = zelk::Json::array(
                {{{"address", (client ? "198.18." + std::to_string(m_indexes[number] % 256) : Net(number)) + "." +
                                  std::to_string(Below(3) + 1)},
                  {"metric", Below(9) + 1}}});
        if (Below(2) != 0)
            ipv4["dnsServers"] = Below(4) != 0 ? Servers(number == 0 ? Below(2) + 1 : 1) : zelk::Json("automatic");
        if (Below(2) != 0)
            adapter["ipv6"] = {
                {"addresses", zelk::Json::array({"2001:db8::" + std::to_string(Below(9) + 10 * number + 1) + "/64"})}};
        if (!client && Below(2) != 0)
            adapter["routes"] = zelk::Json::array({{{"destination", "172.16.0.0/12"},
                                                    {"nextHop", Net(number) + ".9"},
                                                    {"metric", Below(9) + 1},
                                                    {"store", Below(2) != 0 ? "active" : "persistent"}}});
        return adapter;
    }

    static std::string Net(unsigned int number) { return number == 0 ? "192.0.2" : "203.0.113"; }

    /// The first one is on the net of the gateways.
    zelk::Json Addresses(unsigned int number, unsigned int count)
    {
        zelk::Json addresses = zelk::Json::array({Net(number) + "." + std::to_string(Below(5) + 10) + "/24"});
        for (unsigned int i = 1; i < count; ++i)
            addresses.push_back("10." + std::to_string(number) + "." + std::to_string(i) + "." +
                                std::to_string(Below(5) + 10) + "/24");
        return addresses;
    }

    /// Three for both adapters: more of them are not read from the kernel's system.
    zelk::Json Servers(unsigned int count)
    {
        zelk::Json servers = zelk::Json::array();
        for (unsigned int i = 0; i < count; ++i)
            servers.push_back("198.51.100." + std::to_string(10 * i + Below(9) + 1));
        std::shuffle(servers.begin(), servers.end(), m_random);
        return servers;
    }

    std::mt19937 m_random;
    std::vector<std::uint32_t> m_indexes;
};
