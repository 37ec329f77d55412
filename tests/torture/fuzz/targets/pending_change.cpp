// Records of pending changes: what is read of one is written and read the same.

#include <state/pending/pending_change.h>

#include <algorithm>

#include "fuzz.h"

namespace
{

bool AreSame(const zelk::StoredValue& left, const zelk::StoredValue& right)
{
    return left.key == right.key && left.name == right.name && left.value.has_value() == right.value.has_value() &&
           (!left.value || (left.value->type == right.value->type && left.value->data == right.value->data));
}

} // namespace

void fuzz::Try(std::string_view text)
{
    std::vector<zelk::Fault> faults;
    const zelk::PendingChange change = zelk::ParsePendingChange(text, faults);
    if (!faults.empty())
        return;
    Require(zelk::IsChangeId(change.id));
    Require(zelk::TargetsOf(change).size() == change.before.adapters.size());
    const std::string written = zelk::WritePendingChange(change);
    const zelk::PendingChange again = zelk::ParsePendingChange(written, faults);
    Require(faults.empty() && zelk::WritePendingChange(again) == written);
    Require(again.by == change.by && again.steps == change.steps && again.before == change.before);
    Require(again.unknown == change.unknown && again.label == change.label && again.phase == change.phase);
    Require(std::ranges::equal(again.stored, change.stored, AreSame) && again.waitFor == change.waitFor);
}
