#include "system/arguments.h"

#include <memory>
#include <system_error>

#include <winsock2.h>

#include <windows.h>

#include <shellapi.h>

#include "system/text.h"

namespace zelkctl
{
namespace
{

struct FreeLocal
{
    void operator()(wchar_t** pMemory) const noexcept { ::LocalFree(pMemory); }
};

} // namespace

std::vector<std::string> Arguments()
{
    int count = 0;
    const std::unique_ptr<wchar_t*[], FreeLocal> pArguments(::CommandLineToArgvW(::GetCommandLineW(), &count));
    if (!pArguments)
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CommandLineToArgvW");

    std::vector<std::string> result;
    for (int i = 1; i < count; ++i)
        result.push_back(ToUtf8(std::wstring_view(pArguments[static_cast<std::size_t>(i)])));
    return result;
}

} // namespace zelkctl
