#include <state/fields/item.h>

#include "records/pending_record.h"

namespace zelk
{
namespace
{

using zelkctl::PendingShown;

constexpr Field<PendingShown> PENDING[] = {
    Item<PendingShown, &PendingShown::sId>("id", "Change", "What tells it from others."),
    Item<PendingShown, &PendingShown::sStatus>("status", "Status", "How it stands, in a sentence."),
    Item<PendingShown, &PendingShown::phase>("phase", "Phase", "\"applying\", \"waiting\" or \"restoring\"."),
    Item<PendingShown, &PendingShown::user>("user", "By", "Who has made it."),
    Item<PendingShown, &PendingShown::process>("process", "Process", "The process that has made it."),
    Item<PendingShown, &PendingShown::since>("since", "Since", "When it began, in UTC."),
    Item<PendingShown, &PendingShown::confirmWithin>("confirmWithin", "To be confirmed within",
                                                     "How long there is to confirm it.", "s"),
    Item<PendingShown, &PendingShown::secondsLeft>("secondsLeft", "Time left", "How long there is still to confirm it.",
                                                   "s"),
    Item<PendingShown, &PendingShown::bWatched>("watched", "Watched",
                                                "Whether a process watches over it that takes it back in time."),
    Item<PendingShown, &PendingShown::steps>("steps", "Steps", "What it does, a sentence each."),
};

} // namespace

template <>
FieldTable<PendingShown> FieldsOf()
{
    return {"pendingChange", PENDING};
}

} // namespace zelk
