#include <support/platform/wide_file_stream.h>

#include <algorithm>
#include <cstdio>

#include <support/platform/number_text.h>

namespace velmor
{
bool WideFileStream::Open(const wchar_t* pszPath, Mode mode) noexcept
{
    const bool bAppend = mode == Mode::Append;
    Clear();
    m_file = UniqueFile(::CreateFileW(pszPath, bAppend ? FILE_APPEND_DATA : GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      bAppend ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(m_file);
}

void WideFileStream::Flush() noexcept
{
    if (m_file && !m_sPending.empty())
    {
        try
        {
            // A UTF-16 unit never takes more than three bytes of UTF-8.
            m_sBytes.resize(m_sPending.size() * 3);
            const int length =
                ::WideCharToMultiByte(CP_UTF8, 0, m_sPending.data(), static_cast<int>(m_sPending.size()),
                                      m_sBytes.data(), static_cast<int>(m_sBytes.size()), nullptr, nullptr);
            DWORD dwWritten = 0;
            ::WriteFile(m_file.Get(), m_sBytes.data(), static_cast<DWORD>(length), &dwWritten, nullptr);
        }
        catch (...)
        {
            // Out of memory: the text is lost, like any that cannot be written.
        }
    }
    Clear();
}

void WideFileStream::Close() noexcept
{
    Flush();
    m_file.Reset();
}

WideFileStream& WideFileStream::operator<<(std::wstring_view text)
{
    for (;;)
    {
        const std::size_t end = text.find(L'\n');
        m_sPending.append(text.substr(0, end));
        if (end == std::wstring_view::npos)
            return *this;
        m_sPending.append(L"\r\n");
        text.remove_prefix(end + 1);
    }
}

WideFileStream& WideFileStream::operator<<(const char* pszText)
{
    for (; *pszText != '\0'; ++pszText)
        *this << static_cast<wchar_t>(*pszText);
    return *this;
}

WideFileStream& WideFileStream::operator<<(long long value)
{
    char digits[24];
    std::snprintf(digits, sizeof(digits), "%lld", value);
    return *this << digits;
}

WideFileStream& WideFileStream::operator<<(double value)
{
    return *this << ShortText(value).c_str();
}

WideFileStream& WideFileStream::Hex(unsigned long long value, unsigned int minDigits)
{
    const wchar_t* pDigits = m_bUpperCase ? L"0123456789ABCDEF" : L"0123456789abcdef";
    wchar_t text[sizeof(value) * 2];
    wchar_t* const pEnd = text + std::size(text);
    wchar_t* pFirst = pEnd;
    do
    {
        *--pFirst = pDigits[value & 0xF];
        value >>= 4;
    } while (value != 0);
    const auto count = static_cast<std::size_t>(pEnd - pFirst);
    if (count < minDigits)
        m_sPending.append(minDigits - count, L'0');
    m_sPending.append(pFirst, count);
    return *this;
}

} // namespace velmor
