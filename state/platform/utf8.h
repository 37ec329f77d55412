#pragma once

#include <string>
#include <string_view>

namespace zelk
{

/// The UTF-16 text as UTF-8; what is no UTF-16 becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
std::string ToUtf8(std::u16string_view text);

/// The UTF-8 text as UTF-16; what is no UTF-8 becomes U+FFFD.
std::wstring FromUtf8(std::string_view text);

/// Whether two UTF-8 texts are equal without regard to case in any script. Where the system cannot convert them, only
/// identical texts are equal.
bool EqualIgnoringCase(std::string_view left, std::string_view right);

} // namespace zelk
