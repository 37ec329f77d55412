#pragma once

#include "answer/output.h"
#include "parser/command_line.h"

namespace zelkctl
{

/// The command "doctor". It changes nothing and tells what keeps the tool and the library from working; its exit code
/// is EXIT_OPERATION_FAILED when something is wrong.
///
/// The JSON result has "environment", one record, and "findings", a list of
///   "severity"  "ok", "note" (worth knowing) or "wrong" (something does not work)
///   "topic"     "system", "library", "elevation", "logDirectory", "functions" of the platform, "commands" of the
///               system, "adapters" that can be listed, or the "record" of one adapter
///   "adapter"   its name, or its GUID when it has none; null when the finding is about no adapter
///   "text"      the finding, in sentences
///   "missing"   registry values such as "HKLM\Key\Value", of which any one would do; a key "*" is one of any name,
///   told
///               by what the value has to be. Null when the finding is about no registry value
void AddDoctorCommand(CLI::App& app, Output& output);

} // namespace zelkctl
