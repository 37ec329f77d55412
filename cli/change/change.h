#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "adapters/adapter.h"
#include "answer/output.h"

namespace zelkctl
{

/// One thing that a change alters.
struct Aspect
{
    Field field;
    /// How it stands now; null when that cannot be read.
    std::function<Json()> read;
    /// How it will stand; null when that is not known beforehand.
    Json wanted;
    /// Whether what was read is what was wanted. Without it they have to be equal.
    std::function<bool(const Json& now)> isReached = {};
};

/// How far a change reaches, beyond the machine's settings.
enum class Reach
{
    SETTINGS,
    SESSION,   ///< it can cut off who is connected through the adapter
    NEXT_START ///< the machine shows it only after its next start
};

/// Something to be changed, planned but not done.
struct Change
{
    std::string sOperation;              ///< of the library, or what the tool itself does
    std::optional<Adapter> adapter = {}; ///< that it is about
    std::string sDoing;                  ///< while it runs, such as "Renewing the lease"
    std::string sDone;                   ///< after it, a sentence
    std::vector<Aspect> aspects = {};
    std::function<bool()> operation;
    Reach reach = Reach::SETTINGS;
    bool bNeedsElevation = true;
    bool bNeedsIpv6 = false;
};

/// What the user decides about every change.
struct ChangeOptions
{
    bool bCheck = false;   ///< show, change nothing
    bool bVerify = true;   ///< read back
    bool bConsent = false; ///< nobody need be asked
    /// The tool's own: answer with how the aspects stand now, and do nothing else.
    bool bReadBack = false;
};

/// Does the change: checks what has to be known before anything is changed, does it while showing that it runs, and
/// reads back, so that the end without a failure means that the machine shows it. Throws Failure.
void Perform(const Change& change, const ChangeOptions& options, Output& output);

} // namespace zelkctl
