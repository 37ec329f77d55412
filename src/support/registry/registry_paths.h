#pragma once

#include <zelk_nm/string.h>

// Constant texts that live for as long as the library is loaded. They are built with the module's other static objects.

/// Relative to the SYSTEM hive.
extern const velmor::string TCPIP_PARAMETERS;
extern const velmor::string TCPIP_INTERFACES;
extern const velmor::string TCPIP6_INTERFACES;
extern const velmor::string NETWORK_CLASS;
extern const velmor::string NETWORK_CONNECTIONS;
