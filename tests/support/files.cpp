#include <support/files.h>

#include <fstream>
#include <iterator>

#include <winsock2.h>

#include <windows.h>

namespace testing_support
{
namespace
{

// The platform may keep a settings file in memory.
void ForgetProfile(const std::filesystem::path& file)
{
    ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, file.c_str());
}

} // namespace

std::filesystem::path BesideProgram(std::wstring_view sName)
{
    wchar_t path[1024];
    ::GetModuleFileNameW(nullptr, path, std::size(path));
    return std::filesystem::path(path).parent_path() / sName;
}

std::string ReadFileBytes(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

void WriteFileBytes(const std::filesystem::path& file, std::string_view bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

TempDirectory::TempDirectory()
{
    static unsigned int uiNumber = 0;
    m_path = std::filesystem::temp_directory_path() /
             (L"zelk test " + std::to_wstring(::GetCurrentProcessId()) + L'-' + std::to_wstring(++uiNumber));
    std::filesystem::remove_all(m_path);
    std::filesystem::create_directories(m_path);
}

TempDirectory::~TempDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

IniFile::IniFile(const std::filesystem::path& file, std::string_view sContent) : m_file(file)
{
    WriteFileBytes(file, sContent);
    ForgetProfile(file);
}

IniFile::~IniFile()
{
    std::error_code ignored;
    std::filesystem::remove(m_file, ignored);
    ForgetProfile(m_file);
}

} // namespace testing_support
