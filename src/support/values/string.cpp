#include <zelk_nm/string.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>

namespace velmor
{
namespace
{

constexpr wchar_t REPLACEMENT_CHARACTER = L'\xFFFD';

// Character by character, so that one bad byte costs itself and not the rest of the text.
std::wstring Widen(const char* pszText)
{
    std::wstring sWide;
    if (pszText == nullptr)
        return sWide;

    std::size_t left = std::strlen(pszText);
    sWide.reserve(left);
    while (left > 0)
    {
        wchar_t character = static_cast<unsigned char>(*pszText);
        int taken = 1;
        if (character >= 0x80)
        {
            taken = std::mbtowc(&character, pszText, left);
            if (taken < 1)
            {
                character = REPLACEMENT_CHARACTER;
                taken = 1;
            }
        }
        sWide.push_back(character);
        pszText += taken;
        left -= static_cast<std::size_t>(taken);
    }
    return sWide;
}

std::string Narrow(const std::wstring& sWide)
{
    std::string sNarrow;
    sNarrow.reserve(sWide.size());
    for (const wchar_t character : sWide)
    {
        char bytes[MB_LEN_MAX];
        const int count = std::wctomb(bytes, character);
        if (count > 0)
            sNarrow.append(bytes, static_cast<std::size_t>(count));
        else
            sNarrow.push_back('?');
    }
    return sNarrow;
}

const wchar_t* OrEmpty(const wchar_t* pszText) noexcept
{
    return pszText != nullptr ? pszText : L"";
}

} // namespace

string::string() noexcept : m_pszNarrow(nullptr) {}

string::string(const wchar_t* pszText) : m_sText(OrEmpty(pszText)), m_pszNarrow(nullptr) {}

string::string(const wchar_t* pText, std::size_t count) : m_pszNarrow(nullptr)
{
    if (pText != nullptr)
        m_sText.assign(pText, count);
}

string::string(const char* pszText) : m_sText(Widen(pszText)), m_pszNarrow(nullptr) {}

string::string(const std::wstring& sText) : m_sText(sText), m_pszNarrow(nullptr) {}

string::string(const string& other) : m_sText(other.m_sText), m_pszNarrow(nullptr) {}

string::string(string&& other) noexcept
    : m_sText(std::move(other.m_sText)), m_pszNarrow(other.m_pszNarrow.exchange(nullptr))
{
    other.m_sText.clear();
}

string::~string()
{
    ForgetNarrow();
}

string& string::operator=(const wchar_t* pszText)
{
    m_sText = OrEmpty(pszText);
    ForgetNarrow();
    return *this;
}

string& string::operator=(const char* pszText)
{
    m_sText = Widen(pszText);
    ForgetNarrow();
    return *this;
}

string& string::operator=(const std::wstring& sText)
{
    m_sText = sText;
    ForgetNarrow();
    return *this;
}

string& string::operator=(const string& other)
{
    if (this != &other)
    {
        m_sText = other.m_sText;
        ForgetNarrow();
    }
    return *this;
}

string& string::operator=(string&& other) noexcept
{
    if (this != &other)
    {
        m_sText = std::move(other.m_sText);
        other.m_sText.clear();
        delete[] m_pszNarrow.exchange(other.m_pszNarrow.exchange(nullptr));
    }
    return *this;
}

const char* string::narrow_c_str() const
{
    if (char* pszNarrow = m_pszNarrow.load(std::memory_order_acquire))
        return pszNarrow;

    const std::string sNarrow = Narrow(m_sText);
    auto pszNew = std::make_unique<char[]>(sNarrow.size() + 1);
    std::memcpy(pszNew.get(), sNarrow.c_str(), sNarrow.size() + 1);

    // Another thread may have been first: its copy then stays, because its caller may be using it.
    char* pszCurrent = nullptr;
    if (m_pszNarrow.compare_exchange_strong(pszCurrent, pszNew.get(), std::memory_order_acq_rel))
        return pszNew.release();
    return pszCurrent;
}

string& string::append(const wchar_t* pszText)
{
    m_sText.append(OrEmpty(pszText));
    ForgetNarrow();
    return *this;
}

string& string::append(const wchar_t* pText, std::size_t count)
{
    if (pText != nullptr)
        m_sText.append(pText, count);
    ForgetNarrow();
    return *this;
}

string& string::append(const string& other)
{
    m_sText.append(other.m_sText);
    ForgetNarrow();
    return *this;
}

std::size_t string::find(wchar_t character, std::size_t from) const noexcept
{
    return m_sText.find(character, from);
}

std::size_t string::find(const string& text, std::size_t from) const noexcept
{
    return m_sText.find(text.m_sText, from);
}

std::size_t string::rfind(wchar_t character) const noexcept
{
    return m_sText.rfind(character);
}

string& string::erase(std::size_t position, std::size_t count)
{
    m_sText.erase(position, count);
    ForgetNarrow();
    return *this;
}

void string::ForgetNarrow() noexcept
{
    delete[] m_pszNarrow.exchange(nullptr, std::memory_order_acq_rel);
}

bool operator==(const string& left, const string& right) noexcept
{
    return left.size() == right.size() && std::wmemcmp(left.c_str(), right.c_str(), left.size()) == 0;
}

bool operator<(const string& left, const string& right) noexcept
{
    return std::wstring_view(left.c_str(), left.size()) < std::wstring_view(right.c_str(), right.size());
}

} // namespace velmor
