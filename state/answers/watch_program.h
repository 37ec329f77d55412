#pragma once

#include <string>

#include <state/pending/watch_process.h>

namespace zelk
{

/// What the tool is started with to watch over a pending change, before the change's id.
inline constexpr const char* WATCH_VERB = "__watch";

/// The tool as what watches over a change.
/// @param tool     full path of zelkctl.exe
/// @param library  full path of ZELK_NM.DLL
WatchProgram MakeWatchProgram(const std::wstring& tool, const std::wstring& library);

} // namespace zelk
