#pragma once

#include <zelk_nm/tolva.h>

/// The changes that the library makes through the system's `netsh`. Each names the adapter by its connection name, runs
/// one command, blocks until it ends, and answers whether its exit code was 0.
class Wrap_netsh
{
public:
    /// IPv4: replaces the adapter's addresses by this one, with the mask of its prefix. IPv6: adds it for good.
    static bool AddIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr);
    static bool RemoveIpAddr(const TOLVA::NIC_INFO& NicInfo, const TOLVA::ASSOC_IP_ADDR& IpAddr);
    /// Makes it the adapter's only static DNS server of its family.
    static bool SetDnsAddr(const TOLVA::NIC_INFO& NicInfo, const velmor::ip_address& IpDns);
};
