#include <support/trace_file.h>

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

#include <support/files.h>

namespace testing_support
{
namespace
{

// '0' stands for a digit, anything else for itself.
constexpr std::string_view TIME_FORM = "[0000-00-00 00:00:00.000]:";

bool StartsWithTime(std::string_view sLine)
{
    return sLine.size() >= TIME_FORM.size() &&
           std::equal(TIME_FORM.begin(), TIME_FORM.end(), sLine.begin(), [](char form, char character) {
               return form == '0' ? character >= '0' && character <= '9' : form == character;
           });
}

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
    if (!StartsWithTime(sLine))
        return std::string(sLine);
    const std::string_view sRest = sLine.substr(TIME_FORM.size());
    std::size_t digits = 0;
    while (digits < sRest.size() && std::isxdigit(static_cast<unsigned char>(sRest[digits])) != 0)
        ++digits;
    // At least four digits, then ":[V]: ".
    const std::string_view sTag = sRest.substr(digits, 6);
    if (digits < 4 || sTag.size() < 6 || !sTag.starts_with(":[") || !sTag.ends_with("]: "))
        return std::string(sLine);
    return std::string(sTag.substr(1, 3)) + ' ' + std::string(sRest.substr(digits + 6));
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
    const std::vector<std::string> lines = Lines();
    return std::find(lines.begin(), lines.end(), sLine) != lines.end();
}

std::vector<std::string> TraceFile::LinesOf(std::string_view sOperation) const
{
    constexpr std::string_view LEVEL = "[V] ";
    const std::string sStart = std::string(sOperation) + " : ";
    std::vector<std::string> lines = Lines();
    std::erase_if(lines, [&](const std::string& sLine) { return sLine.find(sStart) != LEVEL.size(); });
    return lines;
}

void TraceFile::ExpectLines(const std::vector<std::string>& expected, std::source_location where) const
{
    const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "the transcript");
    EXPECT_EQ(Joined(expected), Joined(Lines()));
}

} // namespace testing_support
