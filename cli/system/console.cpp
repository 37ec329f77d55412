#include "system/console.h"

#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <iostream>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

HANDLE HandleOf(std::FILE* pStream)
{
    return ::GetStdHandle(pStream == stdin    ? STD_INPUT_HANDLE
                          : pStream == stderr ? STD_ERROR_HANDLE
                                              : STD_OUTPUT_HANDLE);
}

bool IsColourWanted()
{
    const char* pszNoColour = std::getenv("NO_COLOR");
    return pszNoColour == nullptr || *pszNoColour == '\0';
}

bool TakesColour(std::FILE* pStream)
{
    DWORD dwMode = 0;
    return ::GetConsoleMode(HandleOf(pStream), &dwMode) && (dwMode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 &&
           IsColourWanted();
}

const char* SequenceOf(Colour colour)
{
    switch (colour)
    {
    case Colour::GOOD: return "\x1B[32m";
    case Colour::WATCH: return "\x1B[33m";
    case Colour::BAD: return "\x1B[31m";
    case Colour::QUIET: return "\x1B[90m";
    case Colour::PLAIN: break;
    }
    return "";
}

} // namespace

bool IsTerminal(std::FILE* pStream)
{
    DWORD dwMode = 0;
    return ::GetConsoleMode(HandleOf(pStream), &dwMode) != FALSE;
}

std::size_t OutputColumns()
{
    constexpr std::size_t USUAL = 80;
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!::GetConsoleScreenBufferInfo(HandleOf(stdout), &info) || info.dwSize.X < 2)
        return USUAL;
    return static_cast<std::size_t>(info.dwSize.X - 1); // a full line would be followed by an empty one
}

std::string Painted(std::string_view text, Colour colour, std::FILE* pStream)
{
    if (colour == Colour::PLAIN || !TakesColour(pStream))
        return std::string(text);
    return SequenceOf(colour) + std::string(text) + "\x1B[0m";
}

ConsoleMode::ConsoleMode(std::FILE* pStream) : m_pStream(pStream), m_bConsole(IsTerminal(pStream))
{
    DWORD dwMode = 0;
    if (!::GetConsoleMode(HandleOf(pStream), &dwMode))
        return;
    m_ulMode = dwMode;
    // Old consoles refuse it: they would print escape sequences instead of heeding them.
    ::SetConsoleMode(HandleOf(pStream), dwMode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

ConsoleMode::~ConsoleMode()
{
    if (m_bConsole)
        ::SetConsoleMode(HandleOf(m_pStream), m_ulMode);
}

Utf8Streams::Utf8Streams()
{
    constexpr std::size_t BUFFER_SIZE = 65536;
    for (std::FILE* const pStream : {stdout, stderr})
    {
        ::_setmode(::_fileno(pStream), _O_BINARY);
        // A console is written byte by byte without a buffer, and old ones show no character that comes in pieces.
        std::setvbuf(pStream, nullptr, _IOFBF, BUFFER_SIZE);
    }
    if (!IsTerminal(stdout) && !IsTerminal(stderr))
        return;
    m_uiCodePage = ::GetConsoleOutputCP();
    ::SetConsoleOutputCP(CP_UTF8);
}

Utf8Streams::~Utf8Streams()
{
    std::cout.flush();
    std::cerr.flush();
    if (m_uiCodePage != 0)
        ::SetConsoleOutputCP(m_uiCodePage);
}

} // namespace zelkctl
