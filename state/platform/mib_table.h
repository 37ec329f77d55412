#pragma once

#include <memory>
#include <span>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <netioapi.h>
#include <windows.h>

#include <state/platform/function.h>

namespace zelk
{

/// Gives a table back to IP Helper. The function is looked up: systems before Vista lack it.
struct FreeMibTable
{
    void operator()(void* table) const noexcept
    {
        if (auto* const free = FindFunction<decltype(::FreeMibTable)>(L"iphlpapi.dll", "FreeMibTable"))
            free(table);
    }
};

/// A table that IP Helper allocated, empty where there is none.
template <class Table>
class MibTable
{
public:
    /// Lets `ask` fill in the table and gives its code. What a failed call leaves in the pointer is no table.
    template <class Ask>
    DWORD Read(Ask&& ask)
    {
        Table* table = nullptr;
        const DWORD code = ask(&table);
        m_table.reset(code == NO_ERROR ? table : nullptr);
        return code;
    }

    [[nodiscard]] auto Rows() const noexcept
    {
        return m_table ? std::span(m_table->Table, m_table->NumEntries)
                       : std::span<std::remove_extent_t<decltype(Table::Table)>>();
    }

private:
    std::unique_ptr<Table, FreeMibTable> m_table;
};

} // namespace zelk
