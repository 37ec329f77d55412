#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelk
{

// Data of registry values, which programs write as they please: without terminators, and of any number of bytes. Texts
// are UTF-16, little-endian; an odd last byte is ignored.

/// A text, up to its first terminator if it has one.
std::u16string DecodeText(std::span<const std::byte> data);

/// A list of texts, each with a terminator; it ends with an empty text or the data.
std::vector<std::u16string> DecodeTexts(std::span<const std::byte> data);

/// A number of 32 bits; nothing for data of any other size.
std::optional<std::uint32_t> DecodeNumber(std::span<const std::byte> data) noexcept;

/// The parts of a text between commas, blanks and semicolons, without empty ones.
std::vector<std::string_view> SplitList(std::string_view text);

/// A date that is written as "M-D-YYYY" or "M/D/YYYY", as YYYY-MM-DD; nothing for any other text, or a day
/// that no calendar has.
std::optional<std::string> IsoDate(std::string_view text);

} // namespace zelk
