#pragma once

#include <string>

namespace zelkctl
{

/// Where the library keeps the trace of one program, by the same rules as the library itself.
struct TraceLocation
{
    std::wstring sDirectory;     ///< without it nothing is written
    std::wstring sFile;          ///< that of the last load of the library
    std::wstring sRotatedFile;   ///< that of the load before it
    std::wstring sTraceSettings; ///< trace.ini, the level
    std::wstring sLogSettings;   ///< zlk.ini, the directory

    [[nodiscard]] bool HasDirectory() const;
};

/// Of zelkctl itself.
TraceLocation LocateTrace();
/// Of the program whose executable, or its directory, has this UTF-8 path.
TraceLocation LocateTraceOf(const std::string& sProgram);

} // namespace zelkctl
