// Where exceptions live, and where each thread finds those that it handles: in static memory of the DLL.
//
// The compiler's run time keeps the second in its thread library's storage, which allocates at a thread's first throw
// and outlives an unload. It takes the first from the heap, with a reserve behind a mutex that is allocated at its
// first use: without any memory left, the first throw throws again until the stack is gone. Here a throw needs no
// memory, and an unload leaves nothing behind. These functions replace the run time's at link time, so that its thread
// library and its thread callbacks stay out of the DLL.
//
// Programs that link the library's objects keep their run time's own functions, because they may use
// std::exception_ptr. A DLL that used it would not link.

#ifdef __MINGW32__

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <cxxabi.h>
#include <unwind.h>

#include <support/platform/handles.h>
#include <zelk_nm/network_error.h>

/// The run time's own layout. Of both, only the first is ever read in the DLL.
struct abi::__cxa_eh_globals
{
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

namespace
{

/// What the run time writes before an exception object; the last part of it is the unwinder's.
constexpr std::size_t HEADER_SIZE = 96 + sizeof(_Unwind_Exception);
static_assert(HEADER_SIZE == 160);
constexpr std::size_t OBJECT_SIZE = 64;
static_assert(sizeof(velmor::NetworkError) <= OBJECT_SIZE, "the largest exception that the library throws");

struct alignas(16) Block
{
    std::byte bytes[HEADER_SIZE + OBJECT_SIZE];
};

/// A thread has up to four at once: the one that it handles, one that this handler throws, and those of destructors on
/// the way.
constexpr std::size_t BLOCKS = 256;
constinit std::atomic<bool> blockTaken[BLOCKS] = {};
constinit Block blocks[BLOCKS] = {};

/// What a thread handles. It is the thread's from its throw until it has freed its last exception. An exception that
/// another thread frees leaves it taken until the thread throws again or ends.
constexpr std::size_t STATES = 512;
constinit std::atomic<DWORD> stateOwners[STATES] = {}; ///< thread ids; 0 is none
constinit abi::__cxa_eh_globals states[STATES] = {};
constinit std::atomic<std::size_t> highestState = 0; ///< no state from here on was ever taken

std::byte* TakeBlock() noexcept
{
    for (std::size_t i = 0; i < BLOCKS; ++i)
        if (!blockTaken[i].exchange(true, std::memory_order_acquire))
            return blocks[i].bytes;
    return nullptr;
}

bool GiveBackBlock(const std::byte* pBlock) noexcept
{
    const std::byte* const pFirst = blocks[0].bytes;
    if (pBlock < pFirst || pBlock >= pFirst + sizeof(blocks))
        return false;
    const auto index = static_cast<std::size_t>(pBlock - pFirst) / sizeof(Block);
    blockTaken[index].store(false, std::memory_order_release);
    return true;
}

/// The number of the thread's state; STATES for a thread that has none.
std::size_t FindState(DWORD dwThread) noexcept
{
    const std::size_t end = highestState.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < end; ++i)
        if (stateOwners[i].load(std::memory_order_relaxed) == dwThread)
            return i;
    return STATES;
}

bool HasEnded(DWORD dwThread) noexcept
{
    const velmor::UniqueHandle<HANDLE, velmor::CloseKernelHandle> thread(::OpenThread(SYNCHRONIZE, FALSE, dwThread));
    return thread ? ::WaitForSingleObject(thread.Get(), 0) == WAIT_OBJECT_0
                  : ::GetLastError() == ERROR_INVALID_PARAMETER;
}

/// Takes a state that nobody has, or with `bOfEndedThreads` one whose thread is no more.
std::size_t ClaimState(DWORD dwThread, bool bOfEndedThreads) noexcept
{
    for (std::size_t i = 0; i < STATES; ++i)
    {
        DWORD dwOwner = stateOwners[i].load(std::memory_order_relaxed);
        if (dwOwner != 0 && !(bOfEndedThreads && HasEnded(dwOwner)))
            continue;
        if (!stateOwners[i].compare_exchange_strong(dwOwner, dwThread, std::memory_order_acquire))
            continue;
        states[i] = {};
        std::size_t highest = highestState.load(std::memory_order_relaxed);
        while (highest <= i && !highestState.compare_exchange_weak(highest, i + 1, std::memory_order_release))
        {
        }
        return i;
    }
    return STATES;
}

abi::__cxa_eh_globals* OwnState() noexcept
{
    const DWORD dwThread = ::GetCurrentThreadId();
    std::size_t i = FindState(dwThread);
    if (i == STATES)
        i = ClaimState(dwThread, false);
    while (i == STATES)
    {
        ::Sleep(1); // hundreds of threads handle exceptions at once: they will come to an end with it
        i = ClaimState(dwThread, true);
    }
    return &states[i];
}

void ReleaseOwnState() noexcept
{
    const std::size_t i = FindState(::GetCurrentThreadId());
    if (i != STATES && states[i].caughtExceptions == nullptr)
        stateOwners[i].store(0, std::memory_order_release);
}

} // namespace

extern "C"
{
    abi::__cxa_eh_globals* abi::__cxa_get_globals() noexcept
    {
        return OwnState();
    }

    abi::__cxa_eh_globals* abi::__cxa_get_globals_fast() noexcept
    {
        return OwnState();
    }

    void* abi::__cxa_allocate_exception(std::size_t size) noexcept
    {
        std::byte* pBlock = nullptr;
        for (;;)
        {
            if (size <= OBJECT_SIZE)
                pBlock = TakeBlock();
            if (pBlock == nullptr)
                pBlock =
                    static_cast<std::byte*>(std::malloc(HEADER_SIZE + size)); // NOLINT(*-no-malloc): throws nothing
            if (pBlock != nullptr)
                break;
            ::Sleep(1);
        }
        std::memset(pBlock, 0, HEADER_SIZE);
        return pBlock + HEADER_SIZE;
    }

    void abi::__cxa_free_exception(void* pException) noexcept
    {
        std::byte* const pBlock = static_cast<std::byte*>(pException) - HEADER_SIZE;
        if (!GiveBackBlock(pBlock))
            std::free(pBlock); // NOLINT(*-no-malloc)
        ReleaseOwnState();
    }

    // Nothing in the DLL has storage of its own for each thread. Without the callback for it the image has no thread
    // callbacks at all, and the system can be told to stop announcing threads.
    extern const PIMAGE_TLS_CALLBACK __dyn_tls_init_callback;
    const PIMAGE_TLS_CALLBACK __dyn_tls_init_callback = nullptr;
}

#endif
