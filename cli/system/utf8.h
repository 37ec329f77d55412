#pragma once

#include <state/platform/utf8.h>

namespace zelkctl
{

// The tool keeps text as UTF-8; the platform and the library take and give UTF-16.
using zelk::EqualIgnoringCase;
using zelk::FromUtf8;
using zelk::ToUtf8;

} // namespace zelkctl
