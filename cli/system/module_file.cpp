#include "system/module_file.h"

#include <state/platform/module_file.h>

#include "system/system_error.h"

namespace zelkctl
{

std::wstring ModuleFile(const wchar_t* pszModule)
{
    std::wstring path = zelk::ModuleFile(::GetModuleHandleW(pszModule));
    if (path.empty())
        throw SystemError("finding the tool's own files");
    return path;
}

} // namespace zelkctl
