#pragma once

#include <string>
#include <vector>

#include <state/fields/field.h>

#include "trace/trace_location.h"

namespace zelkctl
{

/// How much a program's library traces.
struct TraceSettings
{
    unsigned int uiLevel;
    std::string sName; ///< of the level
    bool bDefault;     ///< nothing is set
    std::string sFile; ///< where it is set
};

TraceSettings ReadTraceSettings(const TraceLocation& location);

/// Throws Failure where the file cannot be written.
void WriteTraceLevel(const TraceLocation& location, unsigned int uiLevel);

/// A file or directory that has to do with the trace.
struct TracePath
{
    std::string sItem;
    std::string sPath;
    bool bExists;
};

std::vector<TracePath> TracePathsOf(const TraceLocation& location);

} // namespace zelkctl

namespace zelk
{

template <>
FieldTable<zelkctl::TraceSettings> FieldsOf();
template <>
FieldTable<zelkctl::TracePath> FieldsOf();

} // namespace zelk
