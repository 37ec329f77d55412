#pragma once

#include <optional>
#include <string>
#include <vector>

#include <state/pending/pending_change.h>

namespace zelk
{

/// One file of the folder for pending changes.
struct PendingRecord
{
    std::string id;
    std::optional<PendingChange> change; ///< absent when the file cannot be trusted or understood
    std::string fault;                   ///< then, why
};

// `folder` is that of ChangeFolder(). Whoever writes or removes has the lock on changes.

/// Puts a change on disk, in place of what it was before: it is written beside, flushed and renamed, so that a file is
/// either the old one or the new one.
/// @throws StateError when that fails; the old file stays then.
void StorePendingChange(const std::wstring& folder, const PendingChange& change);

/// Nothing when there is no such file.
std::optional<PendingRecord> LoadPendingChange(const std::wstring& folder, const std::string& id);

/// All that the folder holds, in no order. Nothing where there is no folder, or this process may not read it.
std::vector<PendingRecord> LoadPendingChanges(const std::wstring& folder);

/// @throws StateError when the file is there and cannot be removed.
void RemovePendingChange(const std::wstring& folder, const std::string& id);

/// Removes what a process that died while it wrote has left.
void RemoveHalfWritten(const std::wstring& folder);

} // namespace zelk
