#pragma once

#include <string>

#include <state/fields/json.h>

namespace zelk
{

/// What ZELK_NM.DLL says of itself; empty where it fails to.
struct LibraryVersion
{
    std::string version;
    std::string description;
};

LibraryVersion ReadLibraryVersion();
Json ToJson(const LibraryVersion& version);

} // namespace zelk
