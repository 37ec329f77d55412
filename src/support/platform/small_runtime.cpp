// The compiler's run time names the exception that ends a program, and brings a demangler for it that is a sixth of the
// library. A program without a handler ends either way, so the plain end takes its place.

#ifdef __MINGW32__

#include <cstdlib>

namespace __gnu_cxx
{

void __verbose_terminate_handler();

void __verbose_terminate_handler()
{
    std::abort();
}

} // namespace __gnu_cxx

#endif
