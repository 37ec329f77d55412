#include "trace_reader.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include <zelk_nm/tolva.h>

namespace zelkctl
{
namespace
{

constexpr const wchar_t* TRACE_FILE = L"\\TOLVA_trace.log";
constexpr const wchar_t* ROTATED_TRACE_FILE = L"\\TOLVA_trace.old";

struct CloseFile
{
    void operator()(HANDLE hFile) const noexcept { ::CloseHandle(hFile); }
};
using UniqueFile = std::unique_ptr<void, CloseFile>;

/// Opened so that nobody is kept from appending to the file or from moving it away.
UniqueFile OpenForReading(const std::wstring& sPath)
{
    HANDLE hFile = ::CreateFileW(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                 nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return UniqueFile(hFile != INVALID_HANDLE_VALUE ? hFile : nullptr);
}

std::uint64_t SizeOf(const UniqueFile& file)
{
    LARGE_INTEGER size = {};
    return file && ::GetFileSizeEx(file.get(), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

std::string ReadFrom(const UniqueFile& file, std::uint64_t start)
{
    std::string text;
    LARGE_INTEGER position = {};
    position.QuadPart = static_cast<LONGLONG>(start);
    if (!file || !::SetFilePointerEx(file.get(), position, nullptr, FILE_BEGIN))
        return text;

    char buffer[4096];
    DWORD dwRead = 0;
    while (::ReadFile(file.get(), buffer, sizeof(buffer), &dwRead, nullptr) && dwRead > 0)
        text.append(buffer, dwRead);
    return text;
}

TraceReader::Mark MarkEnd(const UniqueFile& file)
{
    constexpr std::uint64_t ENOUGH_TO_RECOGNISE = 256; // two lines, times and threads included
    const std::uint64_t size = SizeOf(file);
    const std::uint64_t start = size - std::min(size, ENOUGH_TO_RECOGNISE);
    std::string sBefore = ReadFrom(file, start);
    return {start + sBefore.size(), std::move(sBefore)};
}

/// What follows the mark; nothing when the file is not the one that was marked.
std::optional<std::string> ReadAfter(const UniqueFile& file, const TraceReader::Mark& mark)
{
    std::string text = ReadFrom(file, mark.position - mark.sBefore.size());
    if (!text.starts_with(mark.sBefore))
        return std::nullopt;
    return text.erase(0, mark.sBefore.size());
}

/// The same rule as the library's own.
std::wstring TraceDirectory()
{
    velmor::string sOwnDir;
    if (!TOLVA::GetOwnDir(sOwnDir))
        return {};
    constexpr DWORD LONGEST_PATH = 32768;
    std::wstring sDirectory(LONGEST_PATH, L'\0');
    const DWORD length = ::GetPrivateProfileStringW(L"File Locations", L"Logfiles", (sOwnDir + L"\\Logfiles").c_str(),
                                                    sDirectory.data(), LONGEST_PATH, (sOwnDir + L"\\zlk.ini").c_str());
    sDirectory.resize(length);
    return sDirectory;
}

std::string Now()
{
    SYSTEMTIME now = {};
    ::GetLocalTime(&now);
    char text[48];
    std::snprintf(text, sizeof(text), "%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    return text;
}

/// Takes the first line off the text, without its end.
std::string_view TakeLine(std::string_view& text)
{
    const std::size_t length = text.find('\n');
    std::string_view line = text.substr(0, length);
    text.remove_prefix(length != std::string_view::npos ? length + 1 : text.size());
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// The library traces what a command that failed has written, line by line.
void CollectCommandOutput(const TraceLine& line, std::string& sOutput)
{
    constexpr std::string_view OUTPUT_LINE = "sLine = \"";
    std::string_view text = line.sMessage;
    if (!text.starts_with(OUTPUT_LINE) || !text.ends_with('"'))
        return;
    text.remove_prefix(OUTPUT_LINE.size());
    text.remove_suffix(text.empty() ? 0 : 1);
    if (!text.empty())
        sOutput.append(sOutput.empty() ? "" : " ").append(text);
}

} // namespace

TraceReader::TraceReader()
    : m_sDirectory(TraceDirectory()), m_sStart(Now()), m_mark(MarkEnd(OpenForReading(m_sDirectory + TRACE_FILE)))
{
}

std::vector<TraceLine> TraceReader::Problems() const
{
    const std::string sAppended = Appended();
    const unsigned long ulThread = ::GetCurrentThreadId();
    std::vector<TraceLine> problems;
    std::string sOutput;
    for (std::string_view rest = sAppended; !rest.empty();)
    {
        auto line = ParseTraceLine(TakeLine(rest));
        if (!line || line->ulThread != ulThread || line->sTime < m_sStart)
            continue;
        CollectCommandOutput(*line, sOutput);
        if (!line->IsProblem())
            continue;
        line->sCommandOutput = std::exchange(sOutput, {});
        problems.push_back(std::move(*line));
    }
    return problems;
}

bool TraceReader::HasDirectory() const
{
    const DWORD dwAttributes = ::GetFileAttributesW(m_sDirectory.c_str());
    return dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string TraceReader::Appended() const
{
    const UniqueFile file = OpenForReading(m_sDirectory + TRACE_FILE);
    if (const auto appended = ReadAfter(file, m_mark))
        return *appended;
    const UniqueFile rotated = OpenForReading(m_sDirectory + ROTATED_TRACE_FILE);
    // After two rotations the marked file is gone, and the call's lines can stand anywhere in the other two.
    return ReadAfter(rotated, m_mark).value_or(ReadFrom(rotated, 0)) + ReadFrom(file, 0);
}

} // namespace zelkctl
