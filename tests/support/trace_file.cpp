#include <support/trace_file.h>

#include <regex>

#include <support/files.h>

namespace testing_support
{

std::string NormalisedLine(std::string_view sLine)
{
    static const std::regex PREFIX(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\]:[0-9A-Fa-f]{4,}:(\[.\]): )");
    std::cmatch match;
    if (!std::regex_search(sLine.data(), sLine.data() + sLine.size(), match, PREFIX,
                           std::regex_constants::match_continuous))
        return std::string(sLine);
    return match.str(1) + ' ' + std::string(sLine.substr(static_cast<std::size_t>(match.length())));
}

TraceFile::TraceFile() : TraceFile(BesideProgram(L"Logfiles")) {}

TraceFile::TraceFile(const std::filesystem::path& directory) : m_path(directory / L"TOLVA_trace.log")
{
    std::filesystem::create_directories(directory);
    Empty();
}

void TraceFile::Empty() const
{
    std::filesystem::remove(m_path);
}

std::string TraceFile::Bytes() const
{
    return ReadFileBytes(m_path);
}

std::vector<std::string> TraceFile::Lines() const
{
    return LinesOf(m_path);
}

std::vector<std::string> LinesOf(const std::filesystem::path& file)
{
    constexpr std::string_view END = "\r\n";
    std::vector<std::string> lines;
    const std::string sBytes = ReadFileBytes(file);
    for (std::string_view sRest = sBytes; !sRest.empty();)
    {
        const std::size_t end = sRest.find(END);
        lines.push_back(NormalisedLine(sRest.substr(0, end)));
        if (end == std::string_view::npos)
        {
            lines.back() += "<no line end>";
            break;
        }
        sRest.remove_prefix(end + END.size());
    }
    return lines;
}

} // namespace testing_support
