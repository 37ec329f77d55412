#pragma once

#include <zelk_nm/tolva.h>

/// Leases of one adapter, renewed and released by the system's `ipconfig`. Each operation names the adapter by its
/// connection name, blocks until the command ends, and answers whether its exit code was 0.
class Wrap_ipconfig
{
public:
    static bool RenewDhcp4(const TOLVA::NIC_INFO& NicInfo);
    static bool RenewDhcp6(const TOLVA::NIC_INFO& NicInfo);
    static bool ReleaseDhcp4(const TOLVA::NIC_INFO& NicInfo);
    static bool ReleaseDhcp6(const TOLVA::NIC_INFO& NicInfo);
};
