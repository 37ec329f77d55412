#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

/// Room for a table of the platform that says its size only when it is asked for, and can grow before it is asked
/// again.
class TableBuffer
{
public:
    explicit TableBuffer(std::size_t size) : m_bytes(std::make_unique_for_overwrite<std::byte[]>(size)), m_size(size) {}

    /// Calls with ever more room until the table fits: `call` takes the buffer and the size in bytes, sets the size
    /// that is needed, and returns the platform's code. `tooSmall` is the code by which that function says so. Gives
    /// the last code; after eight tries that is `tooSmall`.
    template <class Call>
    DWORD Fill(DWORD tooSmall, Call&& call)
    {
        constexpr int MOST_TRIES = 8;
        DWORD code = tooSmall;
        for (int i = 0; i < MOST_TRIES && code == tooSmall; ++i)
        {
            ULONG size = static_cast<ULONG>(m_size);
            code = call(m_bytes.get(), size);
            if (code == tooSmall)
                Grow(size);
        }
        return code;
    }

    template <class Table>
    [[nodiscard]] const Table* As() const noexcept
    {
        return reinterpret_cast<const Table*>(m_bytes.get());
    }

    [[nodiscard]] std::span<const std::byte> First(std::size_t size) const noexcept
    {
        return {m_bytes.get(), std::min(size, m_size)};
    }

    /// The rows of a table in the buffer, as many as it says or has room for.
    template <class Row>
    [[nodiscard]] std::span<const Row> Rows(const Row* first, std::size_t count) const noexcept
    {
        const auto room = m_bytes.get() + m_size - reinterpret_cast<const std::byte*>(first);
        return {first, std::min(count, static_cast<std::size_t>(room) / sizeof(Row))};
    }

private:
    /// Some more than was asked for: what has just grown may grow again.
    void Grow(std::size_t wanted)
    {
        m_size = (wanted > m_size ? wanted : m_size) * 5 / 4;
        m_bytes = std::make_unique_for_overwrite<std::byte[]>(m_size);
    }

    std::unique_ptr<std::byte[]> m_bytes;
    std::size_t m_size;
};

} // namespace zelk
