#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace zelkctl
{

/// Whether somebody watches an output stream, or types into the standard input.
bool IsTerminal(std::FILE* pStream);

enum class Colour
{
    PLAIN,
    GOOD,  ///< green
    WATCH, ///< yellow
    BAD,   ///< red
    QUIET  ///< grey
};

/// The text in colour where the stream is a terminal that knows colours and NO_COLOR is not set; else as it is. Colour
/// only repeats what the text says.
std::string Painted(std::string_view text, Colour colour, std::FILE* pStream);

/// Makes the standard streams carry UTF-8 with bare line feeds for as long as it lives. A console's code page is
/// restored at the end: it belongs to the shell that waits behind the tool.
class Utf8Streams
{
public:
    Utf8Streams();
    Utf8Streams(const Utf8Streams&) = delete;
    Utf8Streams& operator=(const Utf8Streams&) = delete;
    ~Utf8Streams();

private:
    unsigned int m_uiCodePage; ///< to restore; 0 without a console
};

} // namespace zelkctl
