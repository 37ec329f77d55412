#pragma once

#include <string>
#include <string_view>

#include <support/platform/handles.h>

namespace velmor
{

/// A wide output file stream: collects wide text and writes it as UTF-8 with CR LF line ends, in one system write a
/// flush.
///
/// It stands in for std::wofstream, which would be four fifths of the library's size. Like there, the case of
/// hexadecimal digits is a setting that stays until it is changed. The collecting members may throw std::bad_alloc; a
/// write that fails is not reported.
class WideFileStream
{
public:
    enum class Mode
    {
        Append,
        Truncate
    };

    WideFileStream() = default;
    WideFileStream(const WideFileStream&) = delete;
    WideFileStream& operator=(const WideFileStream&) = delete;
    ~WideFileStream() { Close(); }

    /// Opens or makes the file, shared for reading and writing by others. Text collected so far is dropped.
    bool Open(const wchar_t* pszPath, Mode mode) noexcept;
    void Flush() noexcept;
    /// Flushes and closes.
    void Close() noexcept;
    /// Forgets what was collected since the last flush.
    void Clear() noexcept { m_sPending.clear(); }

    WideFileStream& operator<<(std::wstring_view text);
    WideFileStream& operator<<(wchar_t character) { return *this << std::wstring_view(&character, 1); }
    /// ASCII, as the C run time formats numbers.
    WideFileStream& operator<<(const char* pszText);
    WideFileStream& operator<<(long long value);
    WideFileStream& operator<<(double value);
    WideFileStream& Hex(unsigned long long value, unsigned int minDigits = 1);
    void UpperCaseDigits(bool bUpperCase) noexcept { m_bUpperCase = bUpperCase; }

private:
    UniqueFile m_file;
    std::wstring m_sPending;
    std::string m_sBytes;
    bool m_bUpperCase = false;
};

} // namespace velmor
