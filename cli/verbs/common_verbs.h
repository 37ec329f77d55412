#pragma once

#include <functional>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "change/change.h"
#include "change/state_change.h"
#include "parser/command.h"
#include "records/shown_fields.h"

namespace zelkctl
{

inline constexpr const char* ADAPTER_ARGUMENT = "ADAPTER";
inline constexpr const char* ADAPTER_FORM = "NAME|{GUID}|#INDEX|MAC";

// What verbs of several nouns have in common. What the user gave is asked for when the command line was read.
using GivenAdapter = std::function<zelk::Adapter()>; ///< as it is at that time
using GivenFamily = std::function<TOLVA::FAMILY_TYPE()>;

/// Makes an adapter, in the user's words, the verb's argument.
GivenAdapter AddAdapterArgument(Command verb);

/// Lets the user choose one address family; both are meant by default.
GivenFamily AddFamilyFlags(Command verb);

/// A verb that shows the part of an adapter with these keys; its JSON is the whole adapter.
Command AddAdapterPartVerb(Command noun, const CommandHelp& help, const std::vector<std::string>& keys);

/// A verb that shows the lists of records that an adapter has under these keys as one list.
struct ListVerb
{
    CommandHelp help;
    std::vector<std::string> keys;
    std::vector<Field> fields; ///< of the records
    const char* pszRecord;     ///< what the schema calls them
    std::string sNone;         ///< what people read instead of an empty list
};
Command AddAdapterListVerb(Command noun, const ListVerb& list);

/// Makes the verb one that changes something: `plan` is asked for the change when the command line was read. Adds
/// --check, --no-verify, --yes and --json.
void MakeChangeVerb(Command verb, std::function<Change()> plan);
/// Likewise for a verb that does so only at times: gives what does it.
std::function<Answer()> AddChange(Command verb, std::function<Change()> plan);

/// Adds --check, --keep, --timeout and --json, and what the user gave for them.
std::function<StateChangeOptions()> AddStateChangeOptions(Command verb);

constexpr bool HasIpv4(TOLVA::FAMILY_TYPE enFamily) noexcept
{
    return enFamily != TOLVA::FAMILY_IPV6;
}

constexpr bool HasIpv6(TOLVA::FAMILY_TYPE enFamily) noexcept
{
    return enFamily != TOLVA::FAMILY_IPV4;
}

/// "IPv4", "IPv6", or "IPv4 and IPv6".
constexpr const char* FamilyText(TOLVA::FAMILY_TYPE enFamily) noexcept
{
    if (enFamily == TOLVA::FAMILY_BOTH)
        return "IPv4 and IPv6";
    return enFamily == TOLVA::FAMILY_IPV4 ? "IPv4" : "IPv6";
}

/// That the adapter's item with this key becomes the value.
Aspect ItemBecomes(const zelk::Adapter& adapter, const std::string& sKey, Json wanted);

} // namespace zelkctl
