#pragma once

#include <forward_list>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include <support/image.h>

namespace testing_support
{

/// Every slot of a module's import table that stands for one function, pointed elsewhere until destruction. A function
/// that the module does not import fails the running test.
class ImportSlots
{
public:
    /// A null module is the program itself.
    ImportSlots(HMODULE hModule, const char* pszFunction, void* pReplacement);
    ImportSlots(const ImportSlots&) = delete;
    ImportSlots& operator=(const ImportSlots&) = delete;
    ~ImportSlots();

    [[nodiscard]] void* Original() const noexcept { return m_pOriginal; }

private:
    std::vector<Import> m_slots;
    void* m_pOriginal = nullptr;
};

/// Replaces a platform function for one scope, as the calls of one module see it. The fake may be any callable, with
/// captures too, and may take the original before the arguments; of one lambda expression only one patch can be in
/// force at a time. Patches end in reverse order.
///
///     const ImportPatch<decltype(&::GetInterfaceInfo)> patch("GetInterfaceInfo", [&](auto...) -> DWORD { return 5; });
///     const auto patch = PATCH_IMPORT(GetInterfaceInfo, [&](auto...) -> DWORD { return 5; }); // the same
///     const auto patch = PATCH_IMPORT(GetInterfaceInfo, fake, ::GetModuleHandleW(L"ZELK_NM.DLL"));
template <class Pointer>
class ImportPatch;

template <class Result, class... Args>
class ImportPatch<Result (*)(Args...)>
{
public:
    using Function = Result (*)(Args...);

    template <class Fake>
    ImportPatch(const char* pszFunction, Fake fake, HMODULE hModule = nullptr)
        : m_fake(std::make_shared<Fake>(std::move(fake))),
          m_slots(hModule, pszFunction, reinterpret_cast<void*>(Entry(*static_cast<Fake*>(m_fake.get()))))
    {
    }

    /// What the function was before, to be called from the fake or the test.
    [[nodiscard]] Function Original() const noexcept { return reinterpret_cast<Function>(m_slots.Original()); }

private:
    template <class Fake>
    Function Entry(Fake& fake) noexcept
    {
        static Fake* pFake;
        static ImportPatch* pPatch;
        pFake = &fake;
        pPatch = this;
        return [](Args... args) -> Result {
            if constexpr (std::is_invocable_v<Fake&, Args...>)
                return (*pFake)(args...);
            else
                return (*pFake)(pPatch->Original(), args...);
        };
    }

    std::shared_ptr<void> m_fake;
    ImportSlots m_slots;
};

/// Any number of them.
class ImportPatches
{
public:
    template <class Function, class Fake>
    void Add(const char* pszFunction, Fake fake)
    {
        m_patches.push_front(std::make_shared<ImportPatch<Function>>(pszFunction, std::move(fake)));
    }
    ImportPatches() = default;
    ImportPatches(const ImportPatches&) = delete;
    ImportPatches& operator=(const ImportPatches&) = delete;

private:
    std::forward_list<std::shared_ptr<void>> m_patches; ///< the last one stands first, and ends first
};

/// Adds to a set of patches what PATCH_IMPORT would give.
#define ADD_PATCH(patches, Function, ...) (patches).Add<decltype(&::Function)>(#Function, __VA_ARGS__)

#define PATCH_IMPORT(Function, ...) ::testing_support::ImportPatch<decltype(&::Function)>(#Function, __VA_ARGS__)

/// Replaces WaitForSingleObject, but for waits without end: those are GoogleTest's own, for threads to be over.
template <class Fake>
auto PatchWait(Fake fake)
{
    return PATCH_IMPORT(WaitForSingleObject, [fake](auto original, HANDLE handle, DWORD dwTime) mutable -> DWORD {
        return dwTime == INFINITE ? original(handle, dwTime) : fake(dwTime);
    });
}

} // namespace testing_support
