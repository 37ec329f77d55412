#pragma once

#include <string>

#include <state/fields/json.h>

namespace zelkctl
{

using zelk::Json;

/// The page of these machines, whole and by itself: text, script and data. Nothing that the machines say can end the
/// script element that the data stands in.
/// @param machines  an array of objects with "machine", its name, and of "reading", "difference", "apply", "trace" and
///                  "error" what there is
std::string MakePage(Json machines);

/// Whether the file is such a page, of whatever version.
bool IsPage(const std::wstring& sPath);

} // namespace zelkctl
