#pragma once

#include "answer/answer.h"

namespace zelkctl
{

// JSON Schemas of the two answers that a change gives, what it would do and what it did, and of either.
Json DifferencesSchema();
Json AppliedSchema();
Json StateChangeSchema();
/// Of what was taken back.
Json UndoSchema();

} // namespace zelkctl
