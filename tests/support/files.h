#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace testing_support
{

/// A file or folder beside the test program, such as "zlk.ini".
std::filesystem::path BesideProgram(std::wstring_view sName);

/// The whole file as it is; empty when there is none.
std::string ReadFileBytes(const std::filesystem::path& file);
void WriteFileBytes(const std::filesystem::path& file, std::string_view bytes);

/// A new empty directory, removed with its content at the end.
class TempDirectory
{
public:
    TempDirectory();
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    ~TempDirectory();

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return m_path; }
    [[nodiscard]] std::wstring Text() const { return m_path.wstring(); }
    std::filesystem::path operator/(std::wstring_view sName) const { return m_path / sName; }

private:
    std::filesystem::path m_path;
};

/// A settings file that exists for one scope.
class IniFile
{
public:
    IniFile(const std::filesystem::path& file, std::string_view sContent);
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;
    ~IniFile();

private:
    std::filesystem::path m_file;
};

} // namespace testing_support
