#include <support/golden.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

#include <support/files.h>

namespace testing_support
{
namespace
{

std::string ShowBytes(const std::vector<BYTE>& bytes)
{
    std::ostringstream stream;
    for (const BYTE byte : bytes)
        stream << ' ' << std::hex << int{byte};
    return stream.str();
}

/// The file of the running case; each program has its own folder.
std::filesystem::path FileOf(const std::string& sProgram, const std::string& sPart)
{
    const auto* pInfo = testing::UnitTest::GetInstance()->current_test_info();
    const std::string sCase = std::string(pInfo->test_suite_name()) + '.' + pInfo->name();
    const std::string sName =
        std::regex_replace(sPart.empty() ? sCase : sCase + '.' + sPart, std::regex("[/: ]+"), "-");
    const std::string sFolder = std::regex_replace(sProgram, std::regex("^zelk_nm_|_tests"), "");
    return BesideProgram(L"golden") / sFolder / (sName + ".txt");
}

} // namespace

std::string Show(const RegistryData& data)
{
    if (data == RegistryData())
        return "(none)";
    if (data.dwType == REG_DWORD && data.bytes.size() == sizeof(DWORD))
        return Show("REG_DWORD", *reinterpret_cast<const DWORD*>(data.bytes.data()));
    std::wstring sText(data.bytes.size() / sizeof(wchar_t), L'\0');
    std::copy_n(data.bytes.begin(), sText.size() * sizeof(wchar_t), reinterpret_cast<BYTE*>(sText.data()));
    if (data.dwType == REG_SZ && data == StringData(sText.c_str()))
        return "REG_SZ \"" + Show(sText.c_str()) + '"';
    if (data.dwType == REG_MULTI_SZ && sText.ends_with(L'\0'))
        return "REG_MULTI_SZ " + std::regex_replace(Show(std::wstring_view(sText)), std::regex("\\x00"), "|");
    return "type " + Show(data.dwType) + ':' + ShowBytes(data.bytes);
}

Golden::Golden(const std::string& sPart) : m_sPart(sPart) {}

void Golden::Lines(const std::vector<std::string>& lines)
{
    for (const std::string& sLine : lines)
        Line(sLine);
}

void Golden::Compare()
{
    const std::string sText = std::exchange(m_sText, {});
    if (sText.empty())
        return;
    // A text is stored once where it is the same on every Windows that the program is run on.
    const std::string sProgram = std::filesystem::path(_pgmptr).stem().string();
    const std::filesystem::path shared = FileOf(std::regex_replace(sProgram, std::regex("_5_2$"), ""), m_sPart);
    const std::filesystem::path own = FileOf(sProgram, m_sPart);
    if (const char* pszMode = std::getenv("ZELK_GOLDEN"); pszMode != nullptr && std::string(pszMode) == "write")
    {
        std::filesystem::remove(own);
        std::filesystem::create_directories(own.parent_path());
        if (ReadFileBytes(shared) != sText)
            WriteFileBytes(own, sText);
        return;
    }
    EXPECT_EQ(ReadFileBytes(std::filesystem::exists(own) ? own : shared), sText)
        << own.filename().string() << ": run with ZELK_GOLDEN=write to accept";
}

void ExpectTranscript(const std::function<std::string(const std::string& sQuestion)>& answer, const std::string& sPart)
{
    Golden golden(sPart);
    std::istringstream file(ReadFileBytes(FileOf(std::filesystem::path(_pgmptr).stem().string(), sPart)));
    int questions = 0;
    for (std::string sLine; std::getline(file, sLine);)
        if (sLine.starts_with("# "))
            golden.Line(sLine);
        else if (sLine.starts_with("$ "))
        {
            golden.Line(sLine);
            std::istringstream answered(answer(sLine.substr(2)));
            for (std::string sAnswer; std::getline(answered, sAnswer);)
                golden.Line(sAnswer);
            ++questions;
        }
    EXPECT_LT(0, questions) << "nothing was asked";
}

} // namespace testing_support
