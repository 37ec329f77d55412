#include <support/resources.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <span>

#include <gtest/gtest.h>

namespace testing_support
{
namespace
{

struct HandleEntry
{
    ULONG ulProcess;
    BYTE type;
    BYTE flags;
    USHORT usHandle;
    void* pObject;
    ACCESS_MASK access;
};

} // namespace

unsigned int CountHandles()
{
    using Query = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);
    constexpr ULONG SYSTEM_HANDLES = 16;
    static const auto pQuery = reinterpret_cast<Query>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));

    std::vector<HandleEntry> entries(1024);
    while (pQuery(SYSTEM_HANDLES, entries.data(), static_cast<ULONG>(entries.size() * sizeof(HandleEntry)), nullptr) !=
           0)
    {
        if (entries.size() > 1U << 20)
        {
            ADD_FAILURE() << "the handles cannot be listed";
            return 0;
        }
        entries.resize(entries.size() * 2);
    }
    // The count comes first, padded to the size of a pointer; the entries follow.
    const ULONG ulCount = *reinterpret_cast<const ULONG*>(entries.data());
    const auto* pFirst =
        reinterpret_cast<const HandleEntry*>(reinterpret_cast<const BYTE*>(entries.data()) + sizeof(void*));
    return static_cast<unsigned int>(std::count_if(
        pFirst, pFirst + ulCount, [](const HandleEntry& entry) { return entry.ulProcess == ::GetCurrentProcessId(); }));
}

std::size_t CountHeapBlocks()
{
    std::size_t blocks = 0;
    HANDLE heaps[64];
    const DWORD dwCount = std::min<DWORD>(::GetProcessHeaps(std::size(heaps), heaps), std::size(heaps));
    for (HANDLE hHeap : std::span(heaps, dwCount))
    {
        PROCESS_HEAP_ENTRY entry = {};
        while (::HeapWalk(hHeap, &entry))
            blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    }
    return blocks;
}

/// Keeps the watch's own bookkeeping and other threads out of the count.
class AllocationWatch::Inside
{
public:
    explicit Inside(AllocationWatch& watch) noexcept
        : m_watch(watch), m_bCounts(::GetCurrentThreadId() == watch.m_dwThread && !watch.m_bInside)
    {
        if (m_bCounts)
            watch.m_bInside = true;
    }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside()
    {
        if (m_bCounts)
            m_watch.m_bInside = false;
    }
    explicit operator bool() const noexcept { return m_bCounts; }

private:
    AllocationWatch& m_watch;
    bool m_bCounts;
};

AllocationWatch::AllocationWatch()
    : m_dwThread(::GetCurrentThreadId()), m_bInside(true) // silent until all patches are in place
{
    const auto Allocate = [this](auto original, auto... sizes) -> void* {
        const Inside inside(*this);
        return MayTake(inside) ? Took(inside, original(sizes...)) : nullptr;
    };
    m_patches.Add<void* (*)(std::size_t)>(
        "malloc", [Allocate](auto original, std::size_t size) { return Allocate(original, size); });
    m_patches.Add<void* (*)(std::size_t, std::size_t)>(
        "calloc",
        [Allocate](auto original, std::size_t count, std::size_t size) { return Allocate(original, count, size); });
    m_patches.Add<void* (*)(void*, std::size_t)>("realloc",
                                                 [this](auto original, void* pBlock, std::size_t size) -> void* {
                                                     const Inside inside(*this);
                                                     if (!MayTake(inside))
                                                         return nullptr;
                                                     void* const pNew = original(pBlock, size);
                                                     if (pNew != nullptr || size == 0)
                                                         Freed(inside, pBlock);
                                                     return Took(inside, pNew);
                                                 });
    m_patches.Add<void (*)(void*)>("free", [this](auto original, void* pBlock) {
        const Inside inside(*this);
        Freed(inside, pBlock);
        original(pBlock);
    });
    m_bInside = false;
}

AllocationWatch::~AllocationWatch()
{
    m_bInside = true;
}

void AllocationWatch::Fail(unsigned int first, unsigned int count)
{
    m_uiCount = 0;
    m_bFailed = false;
    m_uiFirstFailure = first;
    m_uiFailures = count;
}

bool AllocationWatch::MayTake(const Inside& inside) noexcept
{
    if (!inside)
        return true;
    ++m_uiCount;
    const bool bFails =
        m_uiFailures > 0 && m_uiCount >= m_uiFirstFailure && m_uiCount - m_uiFirstFailure < m_uiFailures;
    m_bFailed = m_bFailed || bFails;
    return !bFails;
}

void* AllocationWatch::Took(const Inside& inside, void* pBlock)
{
    if (inside && pBlock != nullptr)
        m_live.insert(pBlock);
    return pBlock;
}

void AllocationWatch::Freed(const Inside& inside, void* pBlock)
{
    if (inside)
        m_live.erase(pBlock);
}

} // namespace testing_support
