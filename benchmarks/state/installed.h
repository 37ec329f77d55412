#pragma once

#include <cstddef>

/// What an installed Windows keeps in the registry of each adapter of this machine, and Wine does not; gone again with
/// the object.
class InstalledAdapters
{
public:
    InstalledAdapters();
    InstalledAdapters(const InstalledAdapters&) = delete;
    InstalledAdapters& operator=(const InstalledAdapters&) = delete;
    ~InstalledAdapters();

    [[nodiscard]] std::size_t Count() const noexcept { return m_count; }

private:
    std::size_t m_count = 0;
};
