#pragma once

#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

// TCP/IP keeps an adapter's settings in a key of its own, one a family, named after the adapter's GUID.

/// The adapter's own key below TCPIP_INTERFACES or TCPIP6_INTERFACES.
velmor::string InterfaceKey(const velmor::string& sInterfaces, const TOLVA::NIC_INFO& NicInfo);

/// The same, traced as `pszVariable`.
velmor::string InterfaceKey(const CallFrame& frame, const char* pszVariable, const velmor::string& sInterfaces,
                            const TOLVA::NIC_INFO& NicInfo);
