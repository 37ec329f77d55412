// What an unload has to call: the destructors of static objects. The compiler's run time keeps them in a list on the
// heap and ignores that one may find no room in it; then an object that was built is never destroyed. This list, which
// takes its place at link time, is static. It has room for several times what the library has.

#ifdef __MINGW32__

#define _CRTIMP // defined here, not imported

#include <atomic>
#include <cstddef>

#include <corecrt_startup.h>

namespace
{

constexpr std::size_t MOST_FUNCTIONS = 64;
constinit std::atomic<_onexit_t> functions[MOST_FUNCTIONS] = {};
constinit std::atomic<std::size_t> count = 0;

} // namespace

// The run time's own tables are not used: a DLL has one list.
extern "C"
{
    int _initialize_onexit_table(_onexit_table_t*)
    {
        return 0;
    }

    int _register_onexit_function(_onexit_table_t*, _onexit_t pFunction)
    {
        const std::size_t index = count.fetch_add(1);
        if (index >= MOST_FUNCTIONS)
            return -1;
        functions[index] = pFunction;
        return 0;
    }

    int _execute_onexit_table(_onexit_table_t*)
    {
        // The last to be built goes first. A destructor may register another.
        for (std::size_t end = count; end > 0; end = count)
        {
            count = end - 1;
            if (end <= MOST_FUNCTIONS)
                functions[end - 1].load()();
        }
        return 0;
    }
}

#endif
