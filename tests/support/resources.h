#pragma once

#include <limits>
#include <set>

#include <support/import_patch.h>

namespace testing_support
{

/// Number of kernel handles, registry keys included, that this process has open. The first call of all opens nothing
/// of its own that stays.
unsigned int CountHandles();

/// Number of blocks that are taken in all heaps of this process.
std::size_t CountHeapBlocks();

/// Counts what the program takes from the C heap on the constructing thread, and can make it fail. One at a time; what
/// the test itself allocates between arming and reading counts too.
class AllocationWatch
{
public:
    AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;
    ~AllocationWatch();

    /// Counting starts anew; the `first`-th allocation from now on fails, and as many in all as `count`.
    void Fail(unsigned int first, unsigned int count = 1);
    void FailAllFrom(unsigned int first) { Fail(first, std::numeric_limits<unsigned int>::max()); }
    /// Nothing fails from now on.
    void Rest() noexcept { m_uiFailures = 0; }

    [[nodiscard]] unsigned int Count() const noexcept { return m_uiCount; }
    /// Whether one has failed since Fail.
    [[nodiscard]] bool HasFailed() const noexcept { return m_bFailed; }
    /// Blocks taken and not freed since construction.
    [[nodiscard]] std::size_t Live() const noexcept { return m_live.size(); }

private:
    class Inside;

    bool MayTake(const Inside& inside) noexcept;
    void* Took(const Inside& inside, void* pBlock);
    void Freed(const Inside& inside, void* pBlock);

    DWORD m_dwThread;
    bool m_bInside = false;
    bool m_bFailed = false;
    unsigned int m_uiCount = 0;
    unsigned int m_uiFirstFailure = 0;
    unsigned int m_uiFailures = 0;
    std::set<void*> m_live;
    ImportPatches m_patches; ///< declared last: in force for the shortest time
};

} // namespace testing_support
