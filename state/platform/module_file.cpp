#include <state/platform/module_file.h>

namespace zelk
{

std::wstring ModuleFile(HMODULE module)
{
    constexpr std::size_t LONGEST_PATH = 32768;
    std::wstring path(LONGEST_PATH, L'\0');
    const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < path.size() ? length : 0);
    return path;
}

} // namespace zelk
