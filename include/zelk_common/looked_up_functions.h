#pragma once

// Functions that the library looks up at run time because not every system has them. The tool tells which are missing.

namespace zelk_common
{

inline constexpr wchar_t IP_HELPER[] = L"IPHLPAPI.DLL";
inline constexpr char SET_ADAPTER_IP_ADDRESS[] = "SetAdapterIpAddress";
inline constexpr char CONVERT_INTERFACE_INDEX_TO_LUID[] = "ConvertInterfaceIndexToLuid";
inline constexpr char CREATE_UNICAST_IP_ADDRESS_ENTRY[] = "CreateUnicastIpAddressEntry";
inline constexpr char CREATE_IP_FORWARD_ENTRY2[] = "CreateIpForwardEntry2";
inline constexpr char DELETE_IP_FORWARD_ENTRY2[] = "DeleteIpForwardEntry2";
inline constexpr char DELETE_UNICAST_IP_ADDRESS_ENTRY[] = "DeleteUnicastIpAddressEntry";
inline constexpr char FREE_MIB_TABLE[] = "FreeMibTable";
inline constexpr char GET_IP_FORWARD_TABLE2[] = "GetIpForwardTable2";
inline constexpr char GET_UNICAST_IP_ADDRESS_TABLE[] = "GetUnicastIpAddressTable";
inline constexpr char INITIALIZE_UNICAST_IP_ADDRESS_ENTRY[] = "InitializeUnicastIpAddressEntry";
inline constexpr char GET_TCP6_TABLE[] = "GetTcp6Table";

inline constexpr wchar_t DEVICE_MANAGER[] = L"DEVMGR.DLL";
inline constexpr char DEVICE_PROPERTIES[] = "DeviceProperties_RunDLLW";

} // namespace zelk_common
