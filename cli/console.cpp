#include "console.h"

#include <fcntl.h>
#include <io.h>
#include <iostream>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{

bool IsTerminal(std::FILE* pStream)
{
    DWORD dwMode = 0;
    const DWORD dwStream = pStream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE;
    return ::GetConsoleMode(::GetStdHandle(dwStream), &dwMode) != FALSE;
}

Utf8Streams::Utf8Streams() : m_uiCodePage(0)
{
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
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
