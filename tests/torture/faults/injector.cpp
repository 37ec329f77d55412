#include "injector.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>

#include <support/image.h>

namespace
{

/// What a thunk has saved of its caller, in the order in which it lies on the stack.
struct Registers
{
    std::uintptr_t slot; ///< the Slot, and on return the result where no function is called
    std::uintptr_t arguments[4];
    std::uintptr_t rbx, rbp, rsi, rdi, r12, r13, r14, r15;
    std::uintptr_t returnAddress;
};

// What all thunks do: they save what the called function may read, and ask; then they go on to the function as if they
// had never been, or return what was answered for it.
constexpr unsigned char ASK_BEGIN[] = {
    0x41, 0x57, 0x41, 0x56, 0x41, 0x55, 0x41, 0x54, 0x57, 0x56, 0x55, 0x53, // push r15 ... rbx
    0x41, 0x51, 0x41, 0x50, 0x52, 0x51, 0x41, 0x53,                         // push r9, r8, rdx, rcx, r11
    0x48, 0x83, 0xEC, 0x60,                                                 // sub rsp, 60h
    0x0F, 0x29, 0x44, 0x24, 0x20, 0x0F, 0x29, 0x4C, 0x24, 0x30,             // movaps [rsp+20h], xmm0 ...
    0x0F, 0x29, 0x54, 0x24, 0x40, 0x0F, 0x29, 0x5C, 0x24, 0x50,             // ... xmm3
    0x48, 0x8D, 0x4C, 0x24, 0x60, 0x48, 0xB8,                               // lea rcx, [rsp+60h]; mov rax, ...
};
constexpr unsigned char ASK_END[] = {
    0xFF, 0xD0,                                                             // call rax
    0x0F, 0x28, 0x44, 0x24, 0x20, 0x0F, 0x28, 0x4C, 0x24, 0x30,             // movaps xmm0, [rsp+20h] ...
    0x0F, 0x28, 0x54, 0x24, 0x40, 0x0F, 0x28, 0x5C, 0x24, 0x50,             // ... xmm3
    0x48, 0x83, 0xC4, 0x60,                                                 // add rsp, 60h
    0x41, 0x5B, 0x59, 0x5A, 0x41, 0x58, 0x41, 0x59,                         // pop r11, rcx, rdx, r8, r9
    0x5B, 0x5D, 0x5E, 0x5F, 0x41, 0x5C, 0x41, 0x5D, 0x41, 0x5E, 0x41, 0x5F, // pop rbx ... r15
    0x48, 0x85, 0xC0, 0x74, 0x02, 0xFF, 0xE0,                               // test rax, rax; jz +2; jmp rax
    0x4C, 0x89, 0xD8, 0xC3,                                                 // mov rax, r11; ret
};

std::deque<Slot> slots;
std::uintptr_t watchedBegin = 0, watchedEnd = 0;
DWORD dwArmedThread = 0;
Plan plan;
injector::Counts counts;
bool bLeavesMemory = false;
std::vector<Call> recorded;

class Code
{
public:
    template <std::size_t N>
    void Add(const unsigned char (&bytes)[N])
    {
        Add(bytes, N);
    }
    void AddAddress(const void* pAddress) { Add(&pAddress, sizeof(pAddress)); }
    [[nodiscard]] void* Here() noexcept { return m_pNext; }

private:
    void Add(const void* pBytes, std::size_t size)
    {
        std::memcpy(m_pNext, pBytes, size);
        m_pNext += size;
    }

    static constexpr std::size_t SIZE = 65536;
    unsigned char* m_pNext =
        static_cast<unsigned char*>(::VirtualAlloc(nullptr, SIZE, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
};

/// From where a call comes: through which functions of the watched module. Those that are further away tell little.
std::size_t PlaceOf(const Registers& registers)
{
    CONTEXT context = {};
    context.Rip = registers.returnAddress;
    context.Rsp = reinterpret_cast<std::uintptr_t>(&registers + 1);
    context.Rbx = registers.rbx;
    context.Rbp = registers.rbp;
    context.Rsi = registers.rsi;
    context.Rdi = registers.rdi;
    context.R12 = registers.r12;
    context.R13 = registers.r13;
    context.R14 = registers.r14;
    context.R15 = registers.r15;
    std::size_t place = 0;
    constexpr int DEPTH = 6;
    for (int i = 0; i < DEPTH && context.Rip >= watchedBegin && context.Rip < watchedEnd; ++i)
    {
        place = place * 1099511628211U + (context.Rip - watchedBegin);
        DWORD64 base = 0;
        auto* const pFunction = ::RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        void* pHandlerData = nullptr;
        DWORD64 frame = 0;
        if (pFunction != nullptr)
            ::RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, pFunction, &context, &pHandlerData, &frame,
                               nullptr);
        else
        {
            context.Rip = *reinterpret_cast<const std::uintptr_t*>(context.Rsp);
            context.Rsp += sizeof(std::uintptr_t);
        }
    }
    return place;
}

std::uintptr_t CallOriginal(const Slot& slot, const Registers& registers)
{
    const auto& a = registers.arguments;
    return reinterpret_cast<std::uintptr_t (*)(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t)>(
        slot.pOriginal)(a[0], a[1], a[2], a[3]);
}

/// The failure that is planned for the next call, or null.
const Failure* Planned(const Slot& slot)
{
    if (++counts.uiFallible < plan.uiFirst || counts.uiFallible > plan.uiLast)
        return nullptr;
    std::size_t way = std::min<std::size_t>(plan.uiWay, slot.pFailures->size() - 1);
    if (plan.uiLast != plan.uiFirst && (*slot.pFailures)[way].bOnceOnly)
        way = 0;
    if (counts.uiFailed++ == 0)
        counts.pFirstFailed = &slot;
    ++counts.ullFailures;
    return &(*slot.pFailures)[way];
}

/// A function that is looked up gets a thunk too.
std::uintptr_t LookUp(const Slot& slot, const Registers& registers)
{
    void* pFound = reinterpret_cast<void*>(CallOriginal(slot, registers));
    const auto* const pszName = reinterpret_cast<const char*>(registers.arguments[1]);
    if (pFound == nullptr)
        pFound = FindStandIn(pszName);
    return pFound != nullptr ? reinterpret_cast<std::uintptr_t>(injector::Thunk(pszName, pFound)) : 0;
}

/// FreeMibTable is there wherever tables are that it frees, and so is its DLL, which is imported; without it they stay.
/// A process that has no memory for small blocks may end, where that is the contract.
bool IsAlwaysThere(const Slot& slot, const Registers& registers)
{
    constexpr std::uintptr_t SMALL = 4096;
    const auto& a = registers.arguments;
    if (bLeavesMemory && slot.sName.ends_with("alloc"))
        return (slot.sName == "malloc" ? a[0] : slot.sName == "calloc" ? a[0] * a[1] : a[1]) < SMALL;
    if (slot.sName == "GetModuleHandleW")
        return ::lstrcmpiW(reinterpret_cast<const wchar_t*>(a[0]), L"iphlpapi.dll") == 0;
    return slot.sName == "GetProcAddress" && std::strcmp(reinterpret_cast<const char*>(a[1]), "FreeMibTable") == 0;
}

/// What a thunk asks: the function to go on to, or null with the result in `registers.slot`.
void* Ask(Registers& registers)
{
    const DWORD dwLastError = ::GetLastError();
    const Slot& slot = *reinterpret_cast<const Slot*>(registers.slot);
    const Failure* pFailure = nullptr;
    if (::GetCurrentThreadId() == dwArmedThread)
    {
        ++counts.ullAll;
        if (!slot.pFailures->empty() && !IsAlwaysThere(slot, registers))
        {
            if (plan.uiFirst == 0)
                recorded.push_back({&slot, PlaceOf(registers)});
            pFailure = Planned(slot);
        }
    }
    ::SetLastError(dwLastError);
    if (pFailure == nullptr)
    {
        if (slot.sName != "GetProcAddress")
            return slot.pOriginal;
        registers.slot = LookUp(slot, registers);
        return nullptr;
    }
    if (pFailure->bDoesItsWork)
        CallOriginal(slot, registers);
    registers.slot = pFailure->bResultIsThirdArgument ? registers.arguments[2] : pFailure->result;
    if (pFailure->dwLastError != ERROR_SUCCESS)
        ::SetLastError(pFailure->dwLastError);
    return nullptr;
}

/// A thunk for a slot: it names the slot, and leaves the rest to the code that all have in common.
void* MakeThunk(const Slot& slot)
{
    static Code code;
    static void* const pAsk = [] {
        void* const pBegin = code.Here();
        code.Add(ASK_BEGIN);
        code.AddAddress(reinterpret_cast<const void*>(&Ask));
        code.Add(ASK_END);
        return pBegin;
    }();
    void* const pThunk = code.Here();
    code.Add({0x49, 0xBB}); // mov r11, ...
    code.AddAddress(&slot);
    code.Add({0x49, 0xBA}); // mov r10, ...
    code.AddAddress(pAsk);
    code.Add({0x41, 0xFF, 0xE2}); // jmp r10
    return pThunk;
}

} // namespace

void* injector::Thunk(const char* pszFunction, void* pOriginal)
{
    void* const pStandIn = FindStandIn(pszFunction);
    void* const pCalled = pStandIn != nullptr ? pStandIn : pOriginal;
    for (const Slot& slot : slots)
        if (slot.sName == pszFunction && slot.pOriginal == pCalled)
            return slot.pThunk;
    const std::vector<Failure>* pFailures = FindFailures(pszFunction);
    if (pFailures == nullptr)
    {
        std::fprintf(stderr, "%s is not in failures.txt: say there how it fails\n", pszFunction);
        std::exit(2);
    }
    Slot& slot = slots.emplace_back(Slot{pszFunction, pCalled, pFailures, nullptr});
    slot.pThunk = MakeThunk(slot);
    counts.slots = slots.size();
    return slot.pThunk;
}

void injector::Watch(HMODULE hModule)
{
    watchedBegin = reinterpret_cast<std::uintptr_t>(hModule);
    watchedEnd = watchedBegin + testing_support::Image(hModule).Header().SizeOfImage;
}

void injector::Arm(const Plan& newPlan)
{
    plan = newPlan;
    counts.uiFallible = counts.uiFailed = 0;
    counts.pFirstFailed = nullptr;
    recorded.clear();
}

void injector::Continue()
{
    dwArmedThread = ::GetCurrentThreadId();
}

void injector::Pause()
{
    dwArmedThread = 0;
}

injector::Counts injector::Count()
{
    return counts;
}

void injector::LeaveMemory()
{
    bLeavesMemory = true;
}

const std::vector<Call>& injector::Recorded()
{
    return recorded;
}
