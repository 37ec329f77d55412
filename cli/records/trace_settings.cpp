#include "records/trace_settings.h"

#include <iterator>
#include <utility>

#include <state/fields/item.h>
#include <zelk_common/trace_files.h>

#include "answer/failure.h"
#include "system/elevation.h"
#include "system/handles.h"
#include "system/system_error.h"
#include "system/utf8.h"
#include "trace/trace_record.h"

namespace zelkctl
{
namespace
{

constexpr unsigned int DEFAULT_LEVEL = 3;

} // namespace

TraceSettings ReadTraceSettings(const TraceLocation& location)
{
    const unsigned int uiNone = std::size(TRACE_LEVELS);
    const unsigned int uiStored = ::GetPrivateProfileIntW(zelk_common::TRACE_SECTION, zelk_common::TRACE_KEY,
                                                          static_cast<INT>(uiNone), location.sTraceSettings.c_str());
    const bool bDefault = uiStored >= uiNone;
    const unsigned int uiLevel = bDefault ? DEFAULT_LEVEL : uiStored;
    return {uiLevel, TRACE_LEVELS[uiLevel].pszName, bDefault, ToUtf8(location.sTraceSettings)};
}

void WriteTraceLevel(const TraceLocation& location, unsigned int uiLevel)
{
    if (::WritePrivateProfileStringW(zelk_common::TRACE_SECTION, zelk_common::TRACE_KEY,
                                     std::to_wstring(uiLevel).c_str(), location.sTraceSettings.c_str()))
        return;
    const DWORD dwError = ::GetLastError();
    const bool bElevationHelps = dwError == ERROR_ACCESS_DENIED && !IsElevated();
    throw Failure({.code = bElevationHelps ? EXIT_NEEDS_ELEVATION : EXIT_OPERATION_FAILED,
                   .sReason = "writing " + ToUtf8(location.sTraceSettings) + " failed: " + SystemText(dwError),
                   .sOperation = "WritePrivateProfileString",
                   .sHint = bElevationHelps ? "Run it from an elevated prompt." : ""});
}

std::vector<TracePath> TracePathsOf(const TraceLocation& location)
{
    const std::pair<const char*, const std::wstring&> items[] = {{"directory", location.sDirectory},
                                                                 {"trace", location.sFile},
                                                                 {"previous trace", location.sRotatedFile},
                                                                 {"level settings", location.sTraceSettings},
                                                                 {"directory settings", location.sLogSettings}};
    std::vector<TracePath> paths;
    for (const auto& [pszItem, sPath] : items)
        paths.push_back({pszItem, ToUtf8(sPath), ::GetFileAttributesW(sPath.c_str()) != INVALID_FILE_ATTRIBUTES});
    return paths;
}

} // namespace zelkctl

namespace zelk
{
namespace
{

using zelkctl::TracePath;
using zelkctl::TraceSettings;

constexpr Field<TraceSettings> TRACE_SETTINGS[] = {
    Item<TraceSettings, &TraceSettings::uiLevel>("level", "Level", "Trace level, 0 to 4."),
    Item<TraceSettings, &TraceSettings::sName>("name", "Name", "Name of the level."),
    Item<TraceSettings, &TraceSettings::bDefault>("isDefault", "Default", "Whether no level is set."),
    Item<TraceSettings, &TraceSettings::sFile>("settingsFile", "Settings file", "Where the level is set."),
};

constexpr Field<TracePath> TRACE_PATH[] = {
    Item<TracePath, &TracePath::sItem>("item", "Item", "What it is."),
    Item<TracePath, &TracePath::sPath>("path", "Path", "Where it is."),
    Item<TracePath, &TracePath::bExists>("exists", "Exists", "Whether it exists."),
};

} // namespace

template <>
FieldTable<TraceSettings> FieldsOf()
{
    return {"traceSettings", TRACE_SETTINGS};
}

template <>
FieldTable<TracePath> FieldsOf()
{
    return {"tracePath", TRACE_PATH};
}

} // namespace zelk
