#pragma once

#include <string>
#include <vector>

#include "answer/answer.h"

namespace zelkctl
{

/// The field's value in the record: null where something on the way to it is missing, and an array where the way leads
/// through one.
Json ValueOf(const Field& field, const Json& record);

/// Whether there is nothing to be read: null, or an empty text or list.
bool IsNothing(const Json& value);

/// What people read instead of the value: "-" for nothing, "yes" and "no", the items of an array joined by ", ".
std::string TextOf(const Json& value);

/// Likewise of a field, one text for each item of an array.
std::vector<std::string> TextsOf(const Field& field, const Json& value);

/// The value for a script: a line for each item of an array, an empty line for what is not known.
std::string BareLines(const Json& value);

/// The JSON text; what is no UTF-8 is replaced. An indent below 0 keeps it on one line. In ASCII, other characters are
/// escaped.
std::string Dump(const Json& value, int indent, bool bAscii = false);

} // namespace zelkctl
