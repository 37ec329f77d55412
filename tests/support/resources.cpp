#include <support/resources.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <vector>

#include <winsock2.h>

#include <windows.h>

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

} // namespace testing_support
