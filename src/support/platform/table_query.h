#pragma once

#include <vector>

#include <winsock2.h>

#include <windows.h>

namespace velmor
{

using TableBuffer = std::vector<unsigned char>;

/// The rule of the tables that tell their size first: asks without a buffer, then calls once with exactly the size
/// told. An answer to the first question other than "too small", success included, is the final one and fills nothing.
/// `call` takes the buffer, or null, and the size in bytes, and returns the platform's code. True when the table is
/// there.
template <class Call>
bool AskThenCall(TableBuffer& buffer, DWORD& dwRc, Call&& call)
{
    ULONG ulSize = 0;
    dwRc = call(nullptr, ulSize);
    if (dwRc != ERROR_INSUFFICIENT_BUFFER)
        return false;
    buffer.assign(ulSize, 0);
    dwRc = call(buffer.data(), ulSize);
    return dwRc == NO_ERROR;
}

/// Whether all entries lie in the buffer, in a table that begins with their number. A platform that tells a size too
/// small for the table it then fills must not be believed.
template <class Table, class Count, class Entry>
bool HoldsEntries(const TableBuffer& buffer, Count Table::*pCount, Entry (Table::*pEntries)[ANYSIZE_ARRAY]) noexcept
{
    const auto* pTable = reinterpret_cast<const Table*>(buffer.data());
    const auto EndOf = [&](const auto& field) {
        return static_cast<std::size_t>(reinterpret_cast<const unsigned char*>(&field) - buffer.data());
    };
    if (buffer.size() < sizeof(Count) || buffer.size() < EndOf(pTable->*pEntries))
        return false;
    const Count count = pTable->*pCount;
    return count <= 0 || static_cast<std::size_t>(count) <= (buffer.size() - EndOf(pTable->*pEntries)) / sizeof(Entry);
}

/// The rule of the tables that are tried with a small buffer first: calls with the buffer as it is and, if it was too
/// small, once more with the size told.
template <class Call>
bool CallThenGrowOnce(TableBuffer& buffer, DWORD& dwRc, Call&& call)
{
    ULONG ulSize = static_cast<ULONG>(buffer.size());
    dwRc = call(buffer.data(), ulSize);
    if (dwRc == ERROR_BUFFER_OVERFLOW)
    {
        buffer.resize(ulSize);
        dwRc = call(buffer.data(), ulSize);
    }
    return dwRc == NO_ERROR;
}

} // namespace velmor
