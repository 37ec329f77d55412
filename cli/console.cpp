#include "console.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <iostream>

#include <winsock2.h>

#include <windows.h>

namespace zelkctl
{
namespace
{

bool IsConsole(DWORD dwStream)
{
    DWORD dwMode = 0;
    return ::GetConsoleMode(::GetStdHandle(dwStream), &dwMode) != FALSE;
}

} // namespace

Utf8Streams::Utf8Streams() : m_uiCodePage(0)
{
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
    if (!IsConsole(STD_OUTPUT_HANDLE) && !IsConsole(STD_ERROR_HANDLE))
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
