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

/// What messages call it: its name, or the GUID of one without a name.
std::string Quoted(const Adapter& adapter);

/// All adapters enabled for IPv4; that there is none is no failure. Throws OperationFailed.
std::vector<Adapter> ListAdapters();

/// The one adapter that the UTF-8 text stands for: a GUID with or without braces, a name, or an index, tried in this
/// order and without regard to case. Throws NoSuchAdapter when there is none or more than one.
Adapter FindAdapter(const std::string& sWanted);

} // namespace zelkctl
