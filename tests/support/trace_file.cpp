#include <support/trace_file.h>

#include <algorithm>
#include <regex>

#include <gtest/gtest.h>

#include <support/files.h>

namespace testing_support
{
namespace
{

std::string Joined(const std::vector<std::string>& lines)
{
    std::string sText;
    for (const std::string& sLine : lines)
        sText += sLine + '\n';
    return sText;
}

} // namespace

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
    constexpr std::string_view END = "\r\n";
    std::vector<std::string> lines;
    const std::string sBytes = Bytes();
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

bool TraceFile::Has(std::string_view sLine) const
{
    return std::ranges::count(Lines(), sLine) > 0;
}

std::vector<std::string> TraceFile::LinesOf(std::string_view sOperation) const
{
    constexpr std::string_view LEVEL = "[V] ";
    const std::string sStart = std::string(sOperation) + " : ";
    std::vector<std::string> lines = Lines();
    std::erase_if(lines, [&](const std::string& sLine) { return sLine.find(sStart) != LEVEL.size(); });
    return lines;
}

std::string TraceFile::Complaints() const
{
    std::vector<std::string> lines = Lines();
    std::erase_if(lines,
                  [](const std::string& sLine) { return !sLine.starts_with("[E]") && !sLine.starts_with("[W]"); });
    Empty();
    return Joined(lines);
}

void TraceFile::ExpectLines(const std::vector<std::string>& expected, std::source_location where) const
{
    const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "the transcript");
    EXPECT_EQ(Joined(expected), Joined(Lines()));
}

} // namespace testing_support
