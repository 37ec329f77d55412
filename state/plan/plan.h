#pragma once

#include <string>
#include <vector>

#include <state/desired/desired_state.h>
#include <state/desired/fault.h>
#include <state/machine/machine.h>
#include <state/plan/step.h>

namespace zelk
{

/// An adapter of the machine and all that it shall have, what follows from the rest included.
struct Target
{
    Guid guid;
    std::string name;  ///< before the change
    std::string place; ///< of its desired state, as a JSON pointer
    DesiredAdapter desired;
    bool exact = false; ///< IPv4 addresses and gateways are wanted to the letter, as when taken back
};

/// What a machine shall be, what of it is different now, and the steps from here to there.
struct Plan
{
    std::vector<Target> targets;
    DesiredIdentity identity;
    std::vector<Difference> differences;
    std::vector<Step> steps;
    std::vector<std::string> notes; ///< what a person should know beside that, a sentence each
};

/// Plans the fewest steps that take the machine to the desired state, in an order in which it keeps every address and
/// route that it will have again wherever the system allows that. All is checked beforehand: with a fault the plan is
/// not to be used.
Plan MakePlan(const Machine& machine, const DesiredState& state, std::vector<Fault>& faults);

/// What differs, the steps, and the notes.
Json ToJson(const Plan& plan);

/// The same for targets that are known to be good, as when a change is completed or taken back.
Plan MakePlan(const Machine& machine, std::vector<Target> targets, const DesiredIdentity& identity,
              std::vector<Fault>& faults);

/// What still differs from the targets of a plan.
std::vector<Difference> Differences(const Machine& machine, const std::vector<Target>& targets,
                                    const DesiredIdentity& identity);

/// The adapter of a target; null when it has gone.
const Adapter* FindAdapter(const Machine& machine, const Guid& guid);

} // namespace zelk
