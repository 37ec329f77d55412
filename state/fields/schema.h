#pragma once

#include <state/fields/json.h>

namespace zelk
{

/// The JSON Schema (draft 2020-12) of a whole machine as ToJson writes it. Other schemas of the tool take its "$defs".
Json MachineSchema();

} // namespace zelk
