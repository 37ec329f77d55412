// A thousand times the library is loaded, used and unloaded: nothing is left. Arguments: the seed (nothing here is
// random) and the seconds (0: all loads).

#include <torture/steps.h>

#include "holdings.h"

using namespace torture;

namespace
{

/// The constructor reads the settings and the library's version, and traces.
void LoadAndUse()
{
    const HMODULE library = ::LoadLibraryW(L"ZELK_NM.DLL");
    Check(library != nullptr, "the library cannot be loaded");
    const auto construct =
        reinterpret_cast<void (*)(void*)>(reinterpret_cast<void*>(::GetProcAddress(library, "_ZN5TOLVAC1Ev")));
    Check(construct != nullptr, "the library does not export its constructor");
    char object = 0; // the class has no data
    construct(&object);
    ::FreeLibrary(library);
    Check(::GetModuleHandleW(L"ZELK_NM.DLL") == nullptr, "the library stays loaded");
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    constexpr int WARM = 10; // the platform keeps some things from their first use
    const Budget budget(argc, argv);
    Holdings before = {};
    int round = 0;
    for (; round < 1000 && (round <= WARM || !budget.Over()); ++round)
    {
        if (round == WARM)
            before = Held();
        LoadAndUse();
    }
    const Holdings after = Held();
    Figure("loads", round);
    CheckSame(before, after, "loads");
    return 0;
}
