#include "verbs/tcp6_table.h"

#include <cstddef>
#include <string>

#include "system/failure.h"

namespace zelkctl
{

std::vector<MIB_TCP6ROW> ReadTcp6Table()
{
    constexpr int MOST_ATTEMPTS = 8; // connections may come between two questions
    std::vector<std::byte> buffer;
    unsigned long ulSize = 0;
    unsigned long ulRc = TOLVA::GetTcp6Table(nullptr, ulSize, true);
    for (int i = 0; i < MOST_ATTEMPTS && ulRc == ERROR_INSUFFICIENT_BUFFER; ++i)
    {
        buffer.resize(ulSize);
        ulRc = TOLVA::GetTcp6Table(reinterpret_cast<MIB_TCP6TABLE*>(buffer.data()), ulSize, true);
    }
    if (ulRc != NO_ERROR)
        throw Failure({.sReason = "it answered with code " + std::to_string(ulRc), .sOperation = "GetTcp6Table"});
    if (buffer.empty())
        return {};
    const auto* pTable = reinterpret_cast<const MIB_TCP6TABLE*>(buffer.data());
    return {pTable->table, pTable->table + pTable->dwNumEntries};
}

} // namespace zelkctl
