#include "fuzz.h"

#include <algorithm>

#include "report/machine_parser.h"

namespace
{

/// Nothing in it ends a line, and the command has a name for its adapter.
bool IsSound(const std::string& argument)
{
    return !argument.empty() && std::ranges::all_of(argument, [](unsigned char c) { return c >= ' ' && c != 127; });
}

} // namespace

void fuzz::CheckPlan(const zelk::Plan& plan)
{
    static const zelkctl::MachineParser reports;
    Require(!plan.differences.empty() || plan.steps.empty()); // what cannot be read differs, and no step mends it
    for (const zelk::Step& step : plan.steps)
    {
        Require(!step.text.empty() && !step.touches.empty() && !zelk::MeansOf(step.action).empty());
        if (const auto* const command = std::get_if<zelk::Command>(&step.action))
            Require(std::ranges::all_of(command->arguments, IsSound));
    }
    std::vector<zelk::Fault> faults;
    const zelk::Json machine = {{"machine", "a"}, {"difference", zelk::ToJson(plan)}};
    Require(reports.Machines(machine.dump(), "", faults).size() == 1);
    Require(faults.empty());
}
