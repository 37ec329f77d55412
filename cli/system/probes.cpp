#include "system/probes.h"

#include <algorithm>

#include "system/handles.h"

namespace zelkctl
{
namespace
{

// Those that every interpreter tries.
constexpr const wchar_t* COMMAND_EXTENSIONS[] = {L".com", L".exe", L".bat", L".cmd"};

/// The interpreter looks into the current directory and then along the path, and nowhere else: unlike when a program is
/// started directly, the system's own directory has to be on the path.
std::wstring CommandPath()
{
    std::wstring sPath(::GetEnvironmentVariableW(L"PATH", nullptr, 0), L'\0');
    sPath.resize(::GetEnvironmentVariableW(L"PATH", sPath.data(), static_cast<DWORD>(sPath.size())));
    return L".;" + sPath;
}

} // namespace

bool HasFunction(const wchar_t* pszModule, const char* pszFunction)
{
    const UniqueModule module(::LoadLibraryW(pszModule));
    return module && ::GetProcAddress(module.get(), pszFunction) != nullptr;
}

bool HasCommand(const wchar_t* pszCommand)
{
    return std::ranges::any_of(COMMAND_EXTENSIONS, [&, sPath = CommandPath()](const wchar_t* pszExtension) {
        return ::SearchPathW(sPath.c_str(), pszCommand, pszExtension, 0, nullptr, nullptr) != 0;
    });
}

bool IsWritable(const std::wstring& sDirectory)
{
    const std::wstring sFile = sDirectory + L"\\zelkctl." + std::to_wstring(::GetCurrentProcessId());
    return OwnFile(::CreateFileW(sFile.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr)) != nullptr;
}

} // namespace zelkctl
