#pragma once

#include <string>
#include <vector>

#include <state/machine/machine.h>
#include <zelk_nm/tolva.h>

namespace zelkctl
{

/// What messages call the adapter: its name in quotation marks.
std::string Quoted(const zelk::Adapter& adapter);

/// The text as an argument on a command line: in quotation marks where it needs them.
std::string Argument(const std::string& sText);

/// The one adapter that the UTF-8 text stands for: a name, a GUID with or without braces, an index with or without "#",
/// or a hardware address, all without regard to case; "name:", "guid:", "index:" or "mac:" before it say which. One of
/// the system's own adapters is meant only where no other fits. Throws Failure when there is none or more than one.
const zelk::Adapter& FindAdapter(const zelk::Machine& machine, const std::string& sWanted);

/// Of another reading of the machine: the same adapter. Null when it has gone.
const zelk::Adapter* SameAdapter(const zelk::Machine& machine, const zelk::Adapter& adapter);

/// What the operations of the library know the adapter by.
TOLVA::NIC_INFO NicInfoOf(const zelk::Adapter& adapter);

/// The names of all adapters that the system shows, for the completion of command lines. Empty when they cannot be
/// read.
std::vector<std::string> AdapterNames();

} // namespace zelkctl
