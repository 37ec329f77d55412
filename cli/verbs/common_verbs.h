#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

#include "adapters/adapter.h"
#include "change/state_change.h"
#include "parser/command.h"
#include "records/shown_fields.h"

namespace zelkctl
{

inline constexpr const char* ADAPTER_ARGUMENT = "ADAPTER";
inline constexpr const char* ADAPTER_FORM = "NAME|{GUID}|#INDEX|MAC";

// What verbs of several nouns have in common. What the user gave is asked for when the command line was read.
using GivenAdapter = std::function<zelk::Adapter()>; ///< as it is at that time
using AdapterIn = std::function<const zelk::Adapter&(const zelk::Machine&)>;
using GivenNumber = std::function<std::optional<std::uint32_t>()>;
using GivenSeconds = std::function<std::chrono::seconds()>;

/// The address families that the user chose; without a choice both are meant.
struct GivenFamilies
{
    GivenFlag ipv4;
    GivenFlag ipv6;

    [[nodiscard]] TOLVA::FAMILY_TYPE ForLibrary() const;
    /// Without those that nobody chose and the adapter, or the system, does not have or cannot configure.
    [[nodiscard]] std::vector<zelk::Family> Of(const zelk::Machine& machine, const zelk::Adapter& adapter) const;
};

/// Makes an adapter, in the user's words, the verb's argument.
GivenAdapter AddAdapterArgument(Command verb);

/// Likewise of a machine that was read already.
AdapterIn AddAdapterIn(Command verb);

/// Lets the user choose one address family.
GivenFamilies AddFamilyFlags(Command verb);
GivenFlag AddYesFlag(Command verb);
/// An option whose value is a number of seconds.
GivenNumber AddSecondsOption(Command verb, const std::string& sName, const std::string& sDescription);
GivenSeconds AddTimeoutOption(Command verb, const std::string& sDescription);
/// The metric of a route or a gateway.
GivenNumber AddMetricOption(Command verb);

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

/// A change of this adapter to what is desired of it.
StateChange ChangeOf(const zelk::Adapter& adapter, zelk::DesiredAdapter desired, std::string sDone);

/// Wants the servers, of each family of which there are any.
void SetDnsServers(const std::vector<zelk::IpAddress>& servers, zelk::DesiredAdapter& desired);

/// Makes the verb one that takes the machine to a state. Adds --yes and the options below.
void MakeStateVerb(Command verb, StateChangeOf changeOf);
/// Adds --check, --keep, --timeout, --confirm-within, --wait-for and --json, and what the user gave for them.
std::function<StateChangeOptions()> AddStateChangeOptions(Command verb);

} // namespace zelkctl
