#pragma once

#include <optional>

#include <support/registry/registry.h>
#include <support/trace/call_frame.h>

/// A key of the SYSTEM hive whose subkeys stand for one device each, which a value of theirs identifies.
struct SubkeySearch
{
    velmor::string sKey;
    const wchar_t* pszValue;
    const char* pszFound;           ///< with which every value is traced that is there,
    const char* pszVariable;        ///< as this variable
    const char* pszSubkeyPath = ""; ///< the variable as which every subkey's path is traced; none when empty
};

/// Finds the name of the first subkey, in the registry's order, whose value is `sWanted`, without regard to case.
/// Fails the operation when the key cannot be enumerated; that there is no such subkey is no failure.
bool FindSubkey(const CallFrame& frame, const velmor::Registry_System& registry, const SubkeySearch& search,
                const velmor::string& sWanted, std::optional<velmor::string>& sSubkey);
