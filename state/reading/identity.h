#pragma once

#include <state/reading/reading.h>
#include <state/reading/stored_key.h>

namespace zelk
{

/// Reads the machine's names: those in use from the system, those of the next start from the registry, of which
/// `parameters` is the key of TCP/IP.
void ReadIdentity(Reading& reading, StoredKey& parameters);

} // namespace zelk
