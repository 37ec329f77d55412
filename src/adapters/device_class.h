#pragma once

/// The device-interface class of LAN adapters, TOLVA::NIC_DEVICECLASS_GUID, as the registry names it: a key of the
/// SYSTEM hive with a subkey for every interface of that class.
extern const wchar_t* const LAN_DEVICE_CLASS;
