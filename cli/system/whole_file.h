#pragma once

#include <string>
#include <string_view>

namespace zelkctl
{

/// Writes a file beside its place and then moves it there, over one that exists, so that nobody ever finds half of it.
/// Throws SystemError; then nothing has changed.
void WriteWholeFile(const std::wstring& sPath, std::string_view content);

} // namespace zelkctl
