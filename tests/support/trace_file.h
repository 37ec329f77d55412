#pragma once

#include <filesystem>
#include <source_location>
#include <string>
#include <string_view>
#include <vector>

namespace testing_support
{

/// The trace file that the library writes for this program. Construction makes its directory and empties it.
class TraceFile
{
public:
    /// The usual place: Logfiles beside the program.
    TraceFile();
    explicit TraceFile(const std::filesystem::path& directory);

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return m_path; }
    [[nodiscard]] std::filesystem::path Directory() const { return m_path.parent_path(); }
    void Empty() const;

    /// The file as it is.
    [[nodiscard]] std::string Bytes() const;
    /// The lines without their ends. Time and thread id are removed from the prefix and the level tag is shortened:
    /// "[V] TOLVA::GetTempFilename : starting ...". Lines without a well-formed prefix are left as they are.
    [[nodiscard]] std::vector<std::string> Lines() const;
    /// Whether one of the normalised lines is exactly this.
    [[nodiscard]] bool Has(std::string_view sLine) const;

    /// The normalised lines that one operation wrote under its name.
    [[nodiscard]] std::vector<std::string> LinesOf(std::string_view sOperation) const;

    /// The error and warning lines since the file was emptied, each with its end; empties it.
    [[nodiscard]] std::string Complaints() const;

    /// Fails the test, showing a line by line difference, unless these are all the lines.
    void ExpectLines(const std::vector<std::string>& expected,
                     std::source_location where = std::source_location::current()) const;

private:
    std::filesystem::path m_path;
};

/// A trace line with its prefix normalised as TraceFile::Lines does it.
std::string NormalisedLine(std::string_view sLine);

} // namespace testing_support
