#include <state/answers/pending_result.h>

namespace zelk
{
namespace
{

Json IdsOf(const PendingResult& result)
{
    Json ids = Json::array();
    for (const PendingRecord& record : result.records)
        ids.push_back(record.id);
    return ids;
}

} // namespace

Json ConfirmationToJson(const PendingResult& result)
{
    return {{"confirmed", IdsOf(result)}};
}

Json RestorationToJson(const PendingResult& result)
{
    Json undone = Json::array();
    for (const Undo& undo : result.undone)
        undone.push_back(ToJson(undo));
    const bool restored = result.outcome == PendingOutcome::DONE && !result.undone.empty();
    return {{"restored", restored}, {"changes", IdsOf(result)}, {"undo", std::move(undone)}};
}

} // namespace zelk
