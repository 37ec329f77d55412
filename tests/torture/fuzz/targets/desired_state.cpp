// Desired states: what is read of one is written to a text that reads the same, and a small machine can plan it. Every
// fault names a value that is there.

#include <algorithm>

#include <state/desired/json_form.h>
#include <state/plan/plan.h>

#include "fuzz.h"
#include "report/machine_parser.h"

namespace
{

using zelk::Json;

void CheckFaults(const std::vector<zelk::Fault>& faults, std::string_view text)
{
    const Json json = Json::parse(text, nullptr, false);
    for (const zelk::Fault& fault : faults)
        fuzz::Require(!fault.text.empty() && (fault.place.empty() || json.contains(Json::json_pointer(fault.place))));
}

/// Nothing in it ends a line, and the command has a name for its adapter.
bool IsSound(const std::string& argument)
{
    return !argument.empty() && std::ranges::all_of(argument, [](unsigned char c) { return c >= ' ' && c != 127; });
}

void CheckPlan(const zelk::Plan& plan)
{
    static const zelkctl::MachineParser reports;
    fuzz::Require(plan.differences.empty() == plan.steps.empty());
    for (const zelk::Step& step : plan.steps)
    {
        fuzz::Require(!step.text.empty() && !step.touches.empty() && !zelk::MeansOf(step.action).empty());
        if (const auto* const command = std::get_if<zelk::Command>(&step.action))
            fuzz::Require(std::ranges::all_of(command->arguments, IsSound));
    }
    std::vector<zelk::Fault> faults;
    const Json machine = {{"machine", "a"}, {"difference", zelk::ToJson(plan)}};
    fuzz::Require(reports.Machines(machine.dump(), "", faults).size() == 1);
    fuzz::Require(faults.empty());
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
    if (faults.empty())
        CheckPlan(plan);
}
