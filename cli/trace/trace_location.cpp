#include "trace/trace_location.h"

#include <algorithm>
#include <iterator>

#include <state/platform/registry_keys.h>
#include <zelk_common/trace_files.h>
#include <zelk_nm/tolva.h>

#include "system/local_machine.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

using namespace zelk_common;

bool IsDirectory(const std::wstring& sPath)
{
    const DWORD dwAttributes = ::GetFileAttributesW(sPath.c_str());
    return dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Such a system keeps trace.ini at a fixed place. The trace itself stays beside the program there too: the library
/// settles its directory before it knows the system.
bool IsMiniNT52()
{
    return LocalMachineText(zelk::WINDOWS_VERSION, L"CurrentVersion") == L"5.2" &&
           std::ranges::any_of(zelk::BOOT_IMAGES, LocalMachineHas);
}

std::wstring LogDirectoryOf(const std::wstring& sProgramDirectory, const std::wstring& sLogSettings)
{
    wchar_t directory[260]; // the library cuts it there too
    const DWORD length = ::GetPrivateProfileStringW(LOG_SECTION, LOG_KEY, (sProgramDirectory + LOG_DIRECTORY).c_str(),
                                                    directory, std::size(directory), sLogSettings.c_str());
    return {directory, length};
}

TraceLocation LocateBeside(const std::wstring& sProgramDirectory)
{
    TraceLocation location;
    location.sLogSettings = sProgramDirectory + LOG_SETTINGS;
    location.sTraceSettings = (IsMiniNT52() ? BOOT_IMAGE_DIRECTORY : sProgramDirectory) + TRACE_SETTINGS;
    location.sDirectory = LogDirectoryOf(sProgramDirectory, location.sLogSettings);
    location.sFile = location.sDirectory + L'\\' + TRACE_FILE;
    location.sRotatedFile = location.sFile.substr(0, location.sFile.rfind(L'.')) + PREVIOUS_EXTENSION;
    return location;
}

std::wstring FullPath(const std::wstring& sPath)
{
    std::wstring sFull(::GetFullPathNameW(sPath.c_str(), 0, nullptr, nullptr), L'\0');
    sFull.resize(::GetFullPathNameW(sPath.c_str(), static_cast<DWORD>(sFull.size()), sFull.data(), nullptr));
    return sFull;
}

} // namespace

bool TraceLocation::HasDirectory() const
{
    return IsDirectory(sDirectory);
}

TraceLocation LocateTrace()
{
    velmor::string sOwnDir;
    if (!TOLVA::GetOwnDir(sOwnDir))
        return {};
    return LocateBeside({sOwnDir.c_str(), sOwnDir.size()});
}

TraceLocation LocateTraceOf(const std::string& sProgram)
{
    std::wstring sPath = FullPath(FromUtf8(sProgram));
    if (!IsDirectory(sPath) || sPath.ends_with(L'\\'))
        sPath.erase(std::min(sPath.find_last_of(L'\\'), sPath.size()));
    return LocateBeside(sPath);
}

} // namespace zelkctl
