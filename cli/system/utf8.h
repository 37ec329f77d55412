#pragma once

#include <string_view>

#include <state/platform/utf8.h>

namespace zelkctl
{

// The tool keeps text as UTF-8; the platform and the library take and give UTF-16.
using zelk::FromUtf8;
using zelk::ToUtf8;

/// Whether two UTF-8 texts are equal without regard to case in any script.
bool EqualIgnoringCase(std::string_view left, std::string_view right);

} // namespace zelkctl
