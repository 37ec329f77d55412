#pragma once

#include <optional>

#include <state/desired/fault.h>
#include <state/fields/json.h>

namespace zelkctl
{

/// The first place in a value that has another type than a JSON Schema of this tool says; nothing if there is none.
///
/// Only types are compared. A member may be missing and a word unknown, because versions of the tool that write the
/// same schema version differ in these. A full validator would refuse both.
/// @param definitions  what the schema's references lead to
/// @param sPlace       of the value, as a JSON pointer
std::optional<zelk::Fault> FindMisfit(const zelk::Json& value, const zelk::Json& schema, const zelk::Json& definitions,
                                      const std::string& sPlace);

} // namespace zelkctl
