#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <state/answers/error_report.h>
#include <state/machine/problem.h>
#include <state/pending/guarded_apply.h>
#include <state/values/printable.h>

namespace zelk
{

// How what was found is told: by a code, or by why nothing was done.

/// Whether anything differs.
ExitCode CodeOf(const Plan& plan) noexcept;
ExitCode CodeOf(Outcome outcome) noexcept;
ExitCode CodeOf(PendingOutcome outcome) noexcept;
/// What no system could do counts before what this one cannot.
ExitCode CodeOf(const std::vector<Fault>& faults);

ErrorReport ReportOf(const StateError& error);

/// Why a desired state or options are refused: all faults, a line each, with what `nameOf` makes of their places
/// in the document.
ErrorReport ReportOf(const std::vector<Fault>& faults, std::string (*nameOf)(std::string_view place) = &Printable);

/// @param adapters  those that the text names, if they are not exactly one
ErrorReport ReportOfName(const std::string& text, const std::vector<const Adapter*>& adapters);

ErrorReport ReportOfMissingElevation();

/// Another process is changing the machine; who, where that is known.
ErrorReport ReportOfBusy(const std::optional<Changer>& holder);

/// Another change waits to be confirmed, or is being restored.
ErrorReport ReportOfAwaited(const PendingChange& other);

/// Of a result that is neither done nor half done.
/// @param id  of the change that was asked for; empty for all
ErrorReport ReportOf(const PendingResult& result, const std::string& id);

} // namespace zelk
