#include <support/platform/text_file.h>

#include <cstring>

#include <support/platform/handles.h>

namespace velmor
{
namespace
{

std::string ReadBytes(const string& sPath)
{
    std::string sBytes;
    const UniqueFile file(::CreateFileW(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    char block[4096];
    DWORD dwRead = 0;
    while (file && ::ReadFile(file.Get(), block, sizeof(block), &dwRead, nullptr) && dwRead > 0)
        sBytes.append(block, dwRead);
    return sBytes;
}

bool Widen(UINT codePage, DWORD dwFlags, const std::string& sBytes, std::wstring& sText)
{
    const int size = static_cast<int>(sBytes.size());
    const int length = ::MultiByteToWideChar(codePage, dwFlags, sBytes.data(), size, nullptr, 0);
    if (length <= 0)
        return false;
    sText.resize(static_cast<std::size_t>(length));
    return ::MultiByteToWideChar(codePage, dwFlags, sBytes.data(), size, sText.data(), length) == length;
}

std::wstring Decode(const std::string& sBytes)
{
    constexpr const char* UTF16_MARK = "\xFF\xFE";
    constexpr wchar_t MARK = L'\xFEFF';
    std::wstring sText;
    if (sBytes.starts_with(UTF16_MARK))
    {
        sText.resize((sBytes.size() - 2) / sizeof(wchar_t));
        std::memcpy(sText.data(), sBytes.data() + 2, sText.size() * sizeof(wchar_t));
    }
    else if (!sBytes.empty() && !Widen(CP_UTF8, MB_ERR_INVALID_CHARS, sBytes, sText))
        Widen(CP_OEMCP, 0, sBytes, sText);
    if (sText.starts_with(MARK))
        sText.erase(0, 1);
    return sText;
}

} // namespace

TextFile::TextFile(const string& sPath) : m_sText(Decode(ReadBytes(sPath))) {}

bool TextFile::ReadLine(string& sLine)
{
    if (m_position >= m_sText.size())
        return false;
    const std::size_t end = m_sText.find(L'\n', m_position);
    std::wstring sFound = m_sText.substr(m_position, end == std::wstring::npos ? end : end - m_position);
    m_position = end == std::wstring::npos ? m_sText.size() : end + 1;
    if (sFound.ends_with(L'\r'))
        sFound.pop_back();
    sLine = sFound;
    return true;
}

} // namespace velmor
