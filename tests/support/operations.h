#pragma once

#include <span>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

namespace testing_support
{

inline constexpr const wchar_t* ADAPTER_KEY = L"0007";
inline constexpr const wchar_t* ADAPTER_DEVICE = L"PCI\\VEN_8086&DEV_1\\3";

/// What the operations are given, and where they answer.
struct Arguments
{
    TOLVA::NIC_INFO NicInfo;
    velmor::string sText = L"before";
    const velmor::string sLibrary = L"ZELK_NM.DLL";
    const velmor::string sHwAddr = L"00-1A-2B-3C-4D-5E";
    bool bFlag = true;
    bool bOtherFlag = false;
    unsigned long ulNumber = 4711;
    double dSpeed = 4711;
    TOLVA::FAMILY_TYPE enFamily = TOLVA::FAMILY_BOTH;
    TOLVA::TOLVA_OPER_STATUS enStatus = TOLVA::OPER_STATUS_TESTING;
    TOLVA::HARDWARE_ADDRESS HwAddr{velmor::string(L"02-01-02-03-04-05")};
    velmor::ip_address Address{velmor::string(L"192.0.2.10")};
    velmor::ip_address Address6{velmor::string(L"2001:db8::7")};
    const velmor::ip_address Invalid{velmor::string(L"none")};
    std::vector<TOLVA::NIC_INFO> Adapters;
    std::vector<velmor::ip_address> Addresses;
    std::vector<TOLVA::ASSOC_IP_ADDR> IpAddrs;
    TOLVA::ROUTE_INFO Route;
    std::vector<TOLVA::ROUTE_INFO> Routes;
    MIB_TCP6TABLE table = {};

    explicit Arguments(const wchar_t* pszGuid);
    /// All that an operation can change, as "name=value;".
    [[nodiscard]] std::string Texts() const;
};

/// A call of an operation, and what else than its answer without failures it may give with `true`, by contract: parts
/// of the text, separated by "|". "*" is anything. After `false` anything is allowed with "!", else everything stays
/// as it was. With "^" its first call may spoil all later ones: it looks for a function of the platform only then.
struct Operation
{
    const char* pszName;
    bool (*pCall)(Arguments& a);
    const char* pszAllowed = "";
};

/// A call of every operation that there is.
std::span<const Operation> Operations();

} // namespace testing_support
