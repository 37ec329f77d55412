#pragma once

#include <optional>
#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

namespace zelkctl
{

/// An adapter with what people call it by.
struct Adapter
{
    TOLVA::NIC_INFO info;
    std::optional<unsigned long> index;
    velmor::string sIpconfigName; ///< empty when the connection has no name

    /// The connection name; empty when neither the adapter-address table nor the registry has one.
    [[nodiscard]] const velmor::string& Name() const
    {
        return info.sNicFriendlyName.empty() ? sIpconfigName : info.sNicFriendlyName;
    }
};

/// Its name, or the GUID of one without a name.
std::string CalledName(const Adapter& adapter);
/// What messages call it: the same in quotation marks.
std::string Quoted(const Adapter& adapter);

/// Empty when it has none or it cannot be found out.
velmor::string HardwareAddressOf(const TOLVA::NIC_INFO& info);

/// All adapters enabled for IPv4; that there is none is no failure. Throws Failure.
std::vector<Adapter> ListAdapters();

/// Where an adapter is looked for.
enum class Among
{
    ENABLED,  ///< those that ListAdapters gives
    INSTALLED ///< also those that are disabled, of which only the registry tells
};

/// The one adapter that the UTF-8 text stands for: a name, a GUID with or without braces, an index with or without "#",
/// or a hardware address, all without regard to case; "name:", "guid:", "index:" or "mac:" before it say which. Throws
/// Failure when there is none or more than one.
Adapter FindAdapter(const std::string& sWanted, Among among);

} // namespace zelkctl
