#pragma once

// Operation: what operations on adapters have in common, on top of the call frame: what they refuse, the families that
// they take, the registry keys that they share, and functions that are loaded at first use.

#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

// How operations on one adapter begin.

/// Without its GUID a record names no adapter: fails the operation.
inline bool HasGuid(const CallFrame& frame, const TOLVA::NIC_INFO& NicInfo) noexcept
{
    return !NicInfo.sNicGuid.empty() || frame.Fail("Bad NIC GUID");
}

/// Runs the body of an exported operation that wants an adapter with a GUID. No exception gets past it.
template <class Body>
bool RunOnAdapter(const char* pszName, const TOLVA::NIC_INFO& NicInfo, Body&& body) noexcept
{
    return RunOperation(pszName, [&](const CallFrame& frame) { return HasGuid(frame, NicInfo) && body(frame); });
}

/// Looks the adapter's interface index up, or fails the operation with the text. The index is never kept: the system
/// numbers its interfaces anew when adapters come and go.
inline bool FindIndex(const CallFrame& frame, const TOLVA::NIC_INFO& NicInfo, unsigned long& ulIndex,
                      const char* pszFailure = "TOLVA::GetAdapterIndex failed")
{
    return TOLVA::GetAdapterIndex(NicInfo, ulIndex) || frame.Fail(pszFailure);
}
