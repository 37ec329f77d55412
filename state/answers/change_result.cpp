#include <state/answers/change_result.h>

#include <state/answers/pending_list.h>
#include <state/fields/json_value.h>
#include <state/machine/problem.h>

namespace zelk
{
namespace
{

Json PendingRecords()
try
{
    return JsonValue<std::vector<PendingEntry>>::Write(ReadPending());
}
catch (const StateError&)
{
    return Json::array();
}

} // namespace

Json PlanToJson(const Plan& plan)
{
    Json json = ToJson(plan);
    json["pending"] = PendingRecords();
    return json;
}

Json ChangeToJson(const ApplyResult& result, const Plan& plan, const std::optional<PendingChange>& pending)
{
    Json json = ToJson(result, plan);
    json["pendingChange"] = pending ? Json(pending->id) : Json();
    json["pending"] = PendingRecords();
    return json;
}

} // namespace zelk
