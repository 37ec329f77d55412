#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace zelk
{

/// A program that can watch over a pending change: it calls RunWatchProcess when it is started with `arguments`,
/// followed by the change's id.
struct WatchProgram
{
    std::wstring file;                   ///< full path
    std::vector<std::wstring> libraries; ///< full paths of what has to lie beside it
    std::wstring arguments;
};

/// Starts a copy of a program, kept in the folder for pending changes, that watches over a change: as a service, so
/// that it outlives the logon of this process and a restart of the machine, or where no service can be made as a
/// process without a console. Returns when it watches.
/// @throws StateError when it does not within the time; nothing of it is left then.
void StartWatchProcess(const std::wstring& folder, const std::string& id, const WatchProgram& program,
                       std::chrono::milliseconds timeout);

/// What the started program does: calls `work` once, as the service that watches over this change or as the process
/// that it is, and removes the service. Returns when `work` has.
void RunWatchProcess(const std::string& id, const std::function<void()>& work);

/// Removes copies of programs that no longer watch over anything. What cannot be removed yet stays for the next time.
void RemoveEndedWatches(const std::wstring& folder);

} // namespace zelk
