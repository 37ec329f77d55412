#include "system/program_arguments.h"

#include "system/handles.h"
#include "system/system_error.h"
#include "system/utf8.h"

#include <shellapi.h>

namespace zelkctl
{

std::vector<std::string> ProgramArguments()
{
    int count = 0;
    const UniqueLocalMemory<wchar_t*[]> arguments(::CommandLineToArgvW(::GetCommandLineW(), &count));
    if (!arguments)
        throw SystemError("CommandLineToArgvW");
    std::vector<std::string> result;
    for (int i = 1; i < count; ++i)
        result.push_back(ToUtf8(std::wstring_view(arguments[static_cast<std::size_t>(i)])));
    return result;
}

} // namespace zelkctl
