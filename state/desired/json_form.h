#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <state/desired/desired_state.h>
#include <state/desired/fault.h>
#include <state/fields/json.h>

namespace zelk
{

/// Reads a desired state from its JSON text. Every fault is appended; with one the result is not to be used.
DesiredState ParseDesiredState(std::string_view text, std::vector<Fault>& faults);

/// The same from a value that stands at `place`, a JSON pointer, of a document.
DesiredState ReadDesiredState(const Json& json, const std::string& place, std::vector<Fault>& faults);

/// The JSON form, which ParseDesiredState reads back.
Json ToJson(const DesiredState& state);

/// JSON Schema (draft 2020-12) of that form.
Json DesiredStateSchema();

} // namespace zelk
