#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <state/machine/machine.h>

#include "answer/answer.h"

namespace zelkctl
{

/// The machine as it is now, read when it is first asked for.
class CurrentMachine
{
public:
    [[nodiscard]] const zelk::Machine& Get();

private:
    std::optional<zelk::Machine> m_machine;
};

/// One thing that a change alters.
struct Aspect
{
    std::string sKey;
    std::string sLabel;
    /// How it stands; null when that cannot be read.
    std::function<Json(CurrentMachine&)> read;
    /// How it will stand; null when that is not known beforehand.
    Json wanted;
    /// Whether what was read is what was wanted. Without it the two have to be equal.
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
    std::string sOperation;                    ///< of the library, or what the tool itself does
    std::optional<zelk::Adapter> adapter = {}; ///< that it is about
    std::string sDoing;                        ///< while it runs, such as "Renewing the lease"
    std::string sDone;                         ///< after it, a sentence
    std::vector<Aspect> aspects = {};
    std::function<bool()> operation;
    Reach reach = Reach::SETTINGS;
    bool bNeedsElevation = true;
    bool bNeedsIpv6 = false;
};

/// What the user decides about every change.
struct ChangeOptions
{
    bool bCheck = false;     ///< show, change nothing
    bool bVerify = true;     ///< read the machine afterwards
    bool bConfirmed = false; ///< nobody need be asked
};

/// Does the change: checks what has to be known before anything is changed, does it while showing progress, and
/// verifies that the machine shows it. Throws Failure.
Answer Perform(const Change& change, const ChangeOptions& options);

/// JSON Schemas of the two answers that it gives, together.
Json ChangeSchema();

/// An aspect of the change's adapter; null when the adapter has gone.
Aspect AdapterAspect(const zelk::Adapter& adapter, const std::string& sKey, const std::string& sLabel,
                     std::function<Json(const zelk::Adapter&)> read, Json wanted);

} // namespace zelkctl
