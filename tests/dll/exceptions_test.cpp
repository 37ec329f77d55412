// Exceptions without the run time's heap and thread storage: more of them, and in more threads, than there are places.

#include <cstdlib>

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

DWORD ResultOf(LPTHREAD_START_ROUTINE pFunction)
{
    DWORD dwResult = ~0U;
    const HANDLE hThread = ::CreateThread(nullptr, 0, pFunction, nullptr, 0, nullptr);
    ::WaitForSingleObject(hThread, INFINITE);
    ::GetExitCodeThread(hThread, &dwResult);
    ::CloseHandle(hThread);
    return dwResult;
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
        for (int i = 0; i < 600; ++i)
            ASSERT_EQ(1U, ResultOf(&EndInHandler));
        EXPECT_EQ(0U, ResultOf(&ThrowTwice));
    });
    EXPECT_EQ(0, depth);
}
