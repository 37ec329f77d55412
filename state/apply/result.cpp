#include <state/apply/result.h>

#include <state/fields/field.h>

namespace zelk
{
namespace
{

template <class T>
Json ListOf(const std::vector<T>& values)
{
    Json list = Json::array();
    for (const T& value : values)
        list.push_back(ToJson(value));
    return list;
}

Json AdaptersNow(const ApplyResult& result, const Plan& plan)
{
    Json adapters = Json::array();
    for (const Target& target : plan.targets)
        if (const Adapter* const adapter = FindAdapter(result.now, target.guid))
            adapters.push_back(ToJson(*adapter));
    return adapters;
}

} // namespace

const char* WordOf(StepOutcome outcome) noexcept
{
    constexpr const char* WORDS[] = {"done", "failed", "timedOut", "cancelled", "notRun"};
    return WORDS[static_cast<std::size_t>(outcome)];
}

const char* WordOf(Outcome outcome) noexcept
{
    constexpr const char* WORDS[] = {"unchanged", "changed",   "notVerified",   "failed",
                                     "timedOut",  "cancelled", "needsElevation"};
    return WORDS[static_cast<std::size_t>(outcome)];
}

Json ToJson(const StepResult& result)
{
    Json json = ToJson(result.step);
    json["outcome"] = WordOf(result.outcome);
    json["durationMs"] = result.duration.count();
    json["exitCode"] = result.exitCode ? Json(*result.exitCode) : Json();
    json["error"] = result.error != 0 ? Json(result.error) : Json();
    json["reason"] = result.reason.empty() ? Json() : Json(result.reason);
    json["output"] = result.output.empty() ? Json() : Json(result.output);
    return json;
}

Json ToJson(const Undo& undo)
{
    return {{"complete", undo.open.empty()}, {"steps", ListOf(undo.steps)}, {"differences", ListOf(undo.open)}};
}

Json ToJson(const ApplyResult& result, const Plan& plan)
{
    return {{"changed", result.changed},
            {"outcome", WordOf(result.outcome)},
            {"items", ListOf(plan.differences)},
            {"steps", ListOf(result.steps)},
            {"differences", ListOf(result.open)},
            {"undo", result.undo ? ToJson(*result.undo) : Json()},
            {"notes", plan.notes},
            {"adapters", AdaptersNow(result, plan)}};
}

} // namespace zelk
