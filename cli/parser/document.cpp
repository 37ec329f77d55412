#include "parser/document.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <fcntl.h>
#include <io.h>

#include "answer/cell_text.h"
#include "answer/failure.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

constexpr std::size_t GREATEST_SIZE = 64 << 20;

std::string Decode(std::string bytes)
{
    if (!bytes.starts_with("\xFF\xFE"))
        return bytes;
    const auto ByteAt = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    std::wstring text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
        text += static_cast<wchar_t>(ByteAt(i) | ByteAt(i + 1) << 8);
    return ToUtf8(text);
}

/// As much as may be, and a little more of a stream that has too much.
std::string ReadUpToLimit(std::istream& stream)
{
    std::string bytes;
    std::array<char, 65536> buffer;
    while (bytes.size() <= GREATEST_SIZE && (stream.read(buffer.data(), buffer.size()) || stream.gcount() > 0))
        bytes.append(buffer.data(), static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

} // namespace

std::string ReadDocument(const std::string& sArgument, const std::string& sFile)
{
    std::ifstream file;
    if (sFile == "-")
        ::_setmode(::_fileno(stdin), _O_BINARY); // it may be UTF-16
    else
        file.open(std::filesystem::path(FromUtf8(sFile)), std::ios::binary);
    std::istream& stream = sFile == "-" ? std::cin : file;
    std::string bytes = ReadUpToLimit(stream);
    if (stream.bad() || (sFile != "-" && !file.is_open()))
        throw UsageError(sArgument, Quoted(sFile) + " cannot be read");
    if (bytes.size() > GREATEST_SIZE)
        throw UsageError(sArgument, Quoted(sFile) + " is larger than 64 MB");
    return Decode(std::move(bytes));
}

} // namespace zelkctl
