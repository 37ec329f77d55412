#pragma once

#include <span>
#include <type_traits>
#include <vector>

#include <winsock2.h>

#include <windows.h>

namespace velmor
{

using TableBuffer = std::vector<unsigned char>;

/// The rule of GetInterfaceInfo, GetIpAddrTable and GetIpForwardTable, which tell their size first: asks without a
/// buffer, then calls once with exactly the size told. An answer to the first question other than "too small", success
/// included, is the final one and fills nothing. `call` takes the buffer, or null, and the size in bytes, and returns
/// the platform's code. True when the table is there.
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

/// The rule of GetAdaptersAddresses and GetAdaptersInfo, which report a small buffer with another code and are tried
/// with one first: calls with the buffer as it is and, if it was too
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

/// A table of the first rule in a buffer of its own: it stays as it was read until it is read again. It begins with the
/// number of its entries.
template <class Table, auto pCount, auto pEntries>
class CachedTable
{
public:
    CachedTable() = default;
    CachedTable(const CachedTable&) = delete;
    CachedTable& operator=(const CachedTable&) = delete;

    /// `call` takes the table, or null, and its size in bytes. A second call that answers `dwEmpty` fails too, but the
    /// zeroed buffer is then the table. A table that its size cannot hold fails with ERROR_INVALID_DATA.
    template <class Call>
    bool Load(DWORD& dwRc, Call&& call, DWORD dwEmpty = NO_ERROR)
    {
        m_pTable = nullptr;
        const bool bLoaded = AskThenCall(m_buffer, dwRc, [&](void* pTable, ULONG& ulSize) {
            m_pTable = static_cast<Table*>(pTable);
            return call(m_pTable, ulSize);
        });
        const bool bWhole = HoldsEntries(m_buffer, pCount, pEntries);
        if (!bWhole || (!bLoaded && dwRc != dwEmpty))
            m_pTable = nullptr;
        if (bLoaded && !bWhole)
            dwRc = ERROR_INVALID_DATA;
        return bLoaded && bWhole;
    }

    explicit operator bool() const noexcept { return m_pTable != nullptr; }
    /// None without a table.
    [[nodiscard]] auto Rows() const noexcept
    {
        using Entry = std::remove_reference_t<decltype(*(m_pTable->*pEntries))>;
        if (m_pTable == nullptr)
            return std::span<Entry>();
        const auto count = m_pTable->*pCount;
        return std::span<Entry>(m_pTable->*pEntries, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

private:
    Table* m_pTable = nullptr;
    TableBuffer m_buffer;
};

} // namespace velmor
