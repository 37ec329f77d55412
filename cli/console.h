#pragma once

#include <cstdio>

namespace zelkctl
{

/// Whether somebody watches one of the standard output streams.
bool IsTerminal(std::FILE* pStream);

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
