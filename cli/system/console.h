#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace zelkctl
{

/// Whether somebody watches an output stream, or types into the standard input.
bool IsTerminal(std::FILE* pStream);

/// How many columns a table on the standard output may take: those of the console, or 80 where there is none.
std::size_t OutputColumns();

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

/// Lets a console heed colours for as long as it lives. The console belongs to the shell that waits behind the tool.
class ConsoleMode
{
public:
    explicit ConsoleMode(std::FILE* pStream);
    ConsoleMode(const ConsoleMode&) = delete;
    ConsoleMode& operator=(const ConsoleMode&) = delete;
    ~ConsoleMode();

private:
    std::FILE* m_pStream;
    bool m_bConsole;
    unsigned long m_ulMode = 0;
};

/// Makes the standard streams carry UTF-8 with bare line feeds for as long as it lives, and then restores the console.
class Utf8Streams
{
public:
    Utf8Streams();
    Utf8Streams(const Utf8Streams&) = delete;
    Utf8Streams& operator=(const Utf8Streams&) = delete;
    ~Utf8Streams();

private:
    ConsoleMode m_output{stdout};
    ConsoleMode m_errors{stderr};
    unsigned int m_uiCodePage = 0; ///< to restore; 0 without a console
};

} // namespace zelkctl
