#include <state/answers/pending_list.h>
#include <state/fields/item.h>

namespace zelk
{
namespace
{

constexpr Field<PendingEntry> PENDING[] = {
    Item<PendingEntry, &PendingEntry::id>("id", "Change", "What tells it from others."),
    Item<PendingEntry, &PendingEntry::status>("status", "Status", "How it stands, in a sentence."),
    Item<PendingEntry, &PendingEntry::phase>("phase", "Phase",
                                             "\"applying\", \"waiting\", \"restoring\" or \"restored\"."),
    Item<PendingEntry, &PendingEntry::label>("label", "Label", "A note by whoever made it."),
    Item<PendingEntry, &PendingEntry::user>("user", "By", "Who has made it."),
    Item<PendingEntry, &PendingEntry::process>("process", "Process", "The process that has made it."),
    Item<PendingEntry, &PendingEntry::since>("since", "Since", "When it began, in UTC."),
    Item<PendingEntry, &PendingEntry::confirmWithin>("confirmWithin", "To be confirmed within",
                                                     "How long there is to confirm it.", "s"),
    Item<PendingEntry, &PendingEntry::secondsLeft>("secondsLeft", "Time left", "How long there is still to confirm it.",
                                                   "s"),
    Item<PendingEntry, &PendingEntry::watched>("watched", "Watched",
                                               "Whether a process watches over it that takes it back in time."),
    Item<PendingEntry, &PendingEntry::atWork>("atWork", "At work",
                                              "Whether it is being made or taken back at this moment."),
    Item<PendingEntry, &PendingEntry::cause>("cause", "Cause",
                                             "Why it was taken back: \"notConfirmed\", \"interrupted\" or "
                                             "\"requested\"."),
    Item<PendingEntry, &PendingEntry::steps>("steps", "Steps", "What it does, a sentence each."),
};

} // namespace

template <>
FieldTable<PendingEntry> FieldsOf()
{
    return {"pendingChange", PENDING};
}

} // namespace zelk
