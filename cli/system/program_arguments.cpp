#include "system/program_arguments.h"

#include "system/utf8.h"

/// A name of the run time: it leaves "*" and "?" of the arguments as they are. An adapter may be called so, a file is
/// never meant.
extern "C"
{
    extern int _dowildcard;
    int _dowildcard = 0;
}

namespace zelkctl
{

std::vector<std::string> ProgramArguments(int count, wchar_t** ppszArguments)
{
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i)
        arguments.push_back(ToUtf8(ppszArguments[i]));
    return arguments;
}

} // namespace zelkctl
