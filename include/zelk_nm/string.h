#pragma once

#include <atomic>
#include <cstddef>
#include <string>

#include <zelk_nm/export.h>

/// @file
/// The library's text.

/// The parts of the interface that are not network operations.
namespace velmor
{

/// The library's wide-character string. It follows std::wstring, whose small inline buffer holds up to 7 characters,
/// and adds a cached narrow copy for platform interfaces that take narrow text.
///
/// Narrow text is widened, and wide text narrowed, by the C run time's conversion of the current locale; a character
/// that has no counterpart becomes '?' in the narrow view, and a narrow byte that is no character becomes U+FFFD.
///
/// A null pointer counts as empty text. Operations that allocate may throw std::bad_alloc; nothing else throws but
/// erase.
///
/// Threads: const access, narrow_c_str() included, is safe from several threads; changes need the caller's lock.
class ZELK_NM_API string
{
public:
    /// No position; as a count: all there is.
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    /// Empty.
    string() noexcept;
    /// A copy of text that a NUL ends.
    string(const wchar_t* pszText);
    /// A copy of `count` characters.
    string(const wchar_t* pText, std::size_t count);
    /// Narrow text that a NUL ends, widened.
    string(const char* pszText);
    /// A copy.
    string(const std::wstring& sText);
    /// A copy of the wide text; the narrow one is made anew when it is asked for.
    string(const string& other);
    /// Takes both texts; `other` is empty then.
    string(string&& other) noexcept;
    /// Frees both texts.
    ~string();

    /// @name Assignment
    /// @{

    /// Like the constructor from the same argument.
    string& operator=(const wchar_t* pszText);
    string& operator=(const char* pszText);
    string& operator=(const std::wstring& sText);
    string& operator=(const string& other);
    string& operator=(string&& other) noexcept;
    /// @}

    /// The text, ended by a NUL; valid until the next change.
    [[nodiscard]] const wchar_t* c_str() const noexcept { return m_sText.c_str(); }
    /// The narrow copy, ended by a NUL; made on first use, valid until the next change.
    [[nodiscard]] const char* narrow_c_str() const;
    /// Number of characters without the terminator.
    [[nodiscard]] std::size_t size() const noexcept { return m_sText.size(); }
    /// Whether there is no character.
    [[nodiscard]] bool empty() const noexcept { return m_sText.empty(); }

    /// @name Appending
    /// @{

    /// Adds at the end; narrow text is widened.
    string& append(const wchar_t* pszText);
    string& append(const wchar_t* pText, std::size_t count);
    string& append(const string& other);
    string& operator+=(const wchar_t* pszText) { return append(pszText); }
    string& operator+=(const char* pszText) { return append(string(pszText)); }
    string& operator+=(const string& other) { return append(other); }
    string& operator+=(wchar_t character) { return append(&character, 1); }
    /// @}

    /// Position of the first match at or after `from`; npos when there is none.
    [[nodiscard]] std::size_t find(wchar_t character, std::size_t from = 0) const noexcept;
    /// Likewise of a text.
    [[nodiscard]] std::size_t find(const string& text, std::size_t from = 0) const noexcept;
    /// Position of the last match; npos when there is none.
    [[nodiscard]] std::size_t rfind(wchar_t character) const noexcept;

    /// Removes `count` characters from `position` on, or as many as there are. A position beyond the end throws
    /// std::out_of_range.
    string& erase(std::size_t position = 0, std::size_t count = npos);

private:
    void ForgetNarrow() noexcept;

    std::wstring m_sText;
    mutable std::atomic<char*> m_pszNarrow;
};

/// Whether all characters are equal, case included.
ZELK_NM_API bool operator==(const string& left, const string& right) noexcept;
/// Whether `left` comes first, by the numbers of the characters.
ZELK_NM_API bool operator<(const string& left, const string& right) noexcept;
/// The opposite of equality.
inline bool operator!=(const string& left, const string& right) noexcept
{
    return !(left == right);
}

/// Both texts, one after the other.
inline string operator+(string left, const string& right)
{
    left.append(right);
    return left;
}

} // namespace velmor
