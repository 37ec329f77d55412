#pragma once

#include <filesystem>
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
    [[nodiscard]] std::vector<std::string> Lines() const; ///< as LinesOf

private:
    std::filesystem::path m_path;
};

/// The lines without their ends. Time and thread id are removed from the prefix and the level tag is shortened:
/// "[V] TOLVA::GetTempFilename : starting ...". Lines without a well-formed prefix are left as they are.
std::vector<std::string> LinesOf(const std::filesystem::path& file);

/// A trace line with its prefix normalised as LinesOf does it.
std::string NormalisedLine(std::string_view sLine);

} // namespace testing_support
