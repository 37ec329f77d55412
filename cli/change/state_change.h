#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <state/desired/desired_state.h>
#include <state/desired/fault.h>
#include <state/machine/machine.h>

#include "answer/answer.h"

namespace zelkctl
{

/// A change that takes the machine to a desired state.
struct StateChange
{
    zelk::DesiredState state;
    std::string sDone;           ///< after it, a sentence
    bool bIsDocument = false;    ///< whether it was given as JSON, so that faults name places in it
    bool bCanDisconnect = false; ///< whoever is connected to the machine, so that it has to be confirmed
};

/// What the user decides about every such change.
struct StateChangeOptions
{
    bool bCheck = false;     ///< show, change nothing
    bool bConfirmed = false; ///< nobody need be asked
    bool bKeep = false;      ///< what was done stays when a step fails
    std::chrono::seconds timeout = std::chrono::seconds(60);
    std::optional<std::uint32_t> confirmWithin = {}; ///< seconds; else the previous state is restored
    std::optional<zelk::IpAddress> waitFor = {};     ///< a host whose answer confirms
    std::string sLabel = {};                         ///< of the change while it is pending
};

/// What the user wants of the machine as it was just read.
using StateChangeOf = std::function<StateChange(const zelk::Machine&)>;

/// Throws a Failure that tells all that is wrong with a document, if anything is.
void RefuseDocument(const std::vector<zelk::Fault>& faults);

/// Plans the change on the machine as it is, and does it as the only one that changes the machine, or tells what it
/// would do. `changeOf` is asked again once no other can change the machine. Throws Failure where nothing may be
/// changed; what fails later is part of the answer.
Answer Perform(const StateChangeOf& changeOf, const StateChangeOptions& options);

} // namespace zelkctl
