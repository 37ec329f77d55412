#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <zelk_nm/string.h>

namespace zelkctl
{

/// Always valid UTF-8: what is no UTF-16 becomes U+FFFD.
std::string ToUtf8(std::wstring_view text);
std::string ToUtf8(const velmor::string& text);

velmor::string FromUtf8(std::string_view text);

/// Without regard to case in any script, one character for one.
bool EqualIgnoringCase(const velmor::string& left, const velmor::string& right);

/// The UTF-8 text with U+FFFD for every control character, so that no name breaks a line or drives a terminal.
std::string Printable(std::string_view text);

/// The printable text in quotation marks.
std::string Quoted(std::string_view text);

/// Cells of a terminal that a UTF-8 text takes.
std::size_t DisplayWidth(std::string_view text);

} // namespace zelkctl
