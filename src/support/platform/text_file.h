#pragma once

#include <cstddef>
#include <string>

#include <zelk_nm/string.h>

namespace velmor
{

/// A text file read as a whole, in whatever encoding it is: UTF-16 with a byte order mark, UTF-8, or else the system's
/// OEM code page, in which its commands print. A file that cannot be read has no lines.
class TextFile
{
public:
    explicit TextFile(const string& sPath);

    /// The next line without its end; false when there is none left. Text after the last line end is a line too.
    bool ReadLine(string& sLine);

private:
    std::wstring m_sText;
    std::size_t m_position = 0;
};

} // namespace velmor
