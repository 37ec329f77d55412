// Exceptions without the run time's heap and thread storage: more of them, and in more threads, than there are places.

#include <cstdlib>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <support/files.h>
#include <support/import_patch.h>

namespace
{

const HMODULE hThrower = ::LoadLibraryW(testing_support::BesideProgram(L"probe/thrower.dll").c_str());

DWORD CallInHandler(void (*pFunction)(), const char* pszThrower = "CallInHandler")
{
    const auto pThrower =
        reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(::GetProcAddress(hThrower, pszThrower)));
    return pThrower(reinterpret_cast<void*>(pFunction));
}

int depth = 0;

void GoDeeper()
{
    if (--depth > 0)
        CallInHandler(&GoDeeper);
}

/// A thread that ends so gives nothing back.
DWORD WINAPI EndInHandler(void*)
{
    return CallInHandler([] { ::ExitThread(1); });
}

DWORD WINAPI ThrowTwice(void*)
{
    depth = 2;
    return CallInHandler(&GoDeeper);
}

/// The thread has ended; its number is its own as long as it has a handle.
std::shared_ptr<void> Ended(LPTHREAD_START_ROUTINE pFunction, DWORD dwResult)
{
    std::shared_ptr<void> thread(::CreateThread(nullptr, 0, pFunction, nullptr, 0, nullptr), ::CloseHandle);
    DWORD dwCode = ~dwResult;
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread.get(), INFINITE));
    EXPECT_TRUE(::GetExitCodeThread(thread.get(), &dwCode));
    EXPECT_EQ(dwResult, dwCode);
    return thread;
}

} // namespace

TEST(Exceptions, AreThrownThoughAllPlacesAreTaken)
{
    depth = 300; // exceptions at once
    CallInHandler(&GoDeeper);
    EXPECT_EQ(0, depth);

    const testing_support::ImportPatch<void* (*)(std::size_t)> patch(
        "malloc",
        [failures = 3](auto original, std::size_t size) mutable { return failures-- > 0 ? nullptr : original(size); },
        hThrower);
    CallInHandler([] { ++depth; }, "CallInHandlerOfLarge");
    EXPECT_EQ(1, depth);

    CallInHandler([] { // in a thread that goes on
        std::vector<std::shared_ptr<void>> threads;
        for (int i = 0; i < 600; ++i)
            threads.push_back(Ended(&EndInHandler, 1));
        Ended(&ThrowTwice, 0);
        threads.clear();
        Ended(&ThrowTwice, 0);
    });
    EXPECT_EQ(0, depth);
}
