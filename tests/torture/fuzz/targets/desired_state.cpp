// Desired states: what is read of one is written to a text that reads the same, and a small machine can plan it. Every
// fault names a value that is there.

#include <state/desired/json_form.h>

#include "fuzz.h"

namespace
{

using zelk::Json;

void CheckFaults(const std::vector<zelk::Fault>& faults, std::string_view text)
{
    Json json = Json::value_t::discarded; // many texts are refused as a whole, and need no document
    for (const zelk::Fault& fault : faults)
    {
        fuzz::Require(!fault.text.empty());
        if (fault.place.empty())
            continue;
        if (json.is_discarded())
            json = Json::parse(text, nullptr, false);
        fuzz::Require(json.contains(Json::json_pointer(fault.place)));
    }
}

} // namespace

void fuzz::Try(std::string_view text)
{
    std::vector<zelk::Fault> faults;
    const zelk::DesiredState state = zelk::ParseDesiredState(text, faults);
    CheckFaults(faults, text);
    if (!faults.empty())
        return;
    const std::string written = zelk::ToJson(state).dump();
    Require(zelk::ParseDesiredState(written, faults) == state && faults.empty());
    const zelk::Plan plan = zelk::MakePlan(SmallMachine(), state, faults);
    CheckFaults(faults, text);
    if (!faults.empty())
        return;
    CheckPlan(plan);
    Require(plan.differences.empty() == plan.steps.empty());
}
