// What the compiler's run time brings along without need, left out by taking its place at link time: a quarter of the
// library.

#ifdef __MINGW32__

#include <cstdlib>
#include <exception>

namespace __gnu_cxx
{

/// The run time's own names the exception that ends a program, and brings a demangler for it. A program without a
/// handler ends either way.
void __verbose_terminate_handler()
{
    std::abort();
}

} // namespace __gnu_cxx

extern "C"
{
    // std::random_device::_M_init and std::__sso_string's constructor stand beside what std::out_of_range and its like
    // are made of. Nothing calls them, but they bring the random devices and every function of std::string.
    [[noreturn]] void _ZNSt13random_device7_M_initEPKcy();
    [[noreturn]] void _ZNSt12__sso_stringC1EPKcy();

    void _ZNSt13random_device7_M_initEPKcy()
    {
        std::abort();
    }

    void _ZNSt12__sso_stringC1EPKcy()
    {
        std::abort();
    }
}

#endif
