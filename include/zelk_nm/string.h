#pragma once

#include <atomic>
#include <cstddef>
#include <string>

#include <zelk_nm/export.h>

/// \file
/// The class velmor::string.

/// Values that the operations of TOLVA take and return.
namespace velmor
{

/// The constants of velmor::string.
///
/// They are not members of the string itself, because compilers treat every static member of an imported class as
/// imported, and the library does not export constants that are defined in its headers. A program that binds one to a
/// reference would not link.
struct string_constants
{
    /// As a result: not found. As a count: up to the end.
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);
};

/// A wide-character string with those members of std::wstring that the library needs, and a narrow copy for interfaces
/// that take narrow text.
///
/// Conversions use the current locale of the C run time. A character that the locale does not have becomes '?' in
/// narrow text; in the "C" locale, with which programs start, these are all characters above U+00FF. A narrow byte that
/// is not a character becomes U+FFFD. To print text in any script, use c_str().
///
/// A null pointer counts as empty text. Members that allocate memory can throw std::bad_alloc. Constant objects can be
/// read from several threads; that includes narrow_c_str().
class ZELK_NM_API string : public string_constants
{
public:
    /// Creates an empty string.
    string() noexcept;
    /// Copies null-terminated text.
    string(const wchar_t* pszText);
    /// Copies `count` characters.
    string(const wchar_t* pText, std::size_t count);
    /// Converts null-terminated narrow text.
    string(const char* pszText);
    /// Copies a string.
    string(const std::wstring& sText);
    /// Copies a string.
    string(const string& other);
    /// Moves a string. `other` is empty afterwards.
    string(string&& other) noexcept;
    /// Destroys the string, its narrow copy included.
    ~string();

    /// \name Assignment
    /// @{

    /// Replaces the text with that of the argument, as the constructors do.
    string& operator=(const wchar_t* pszText);
    string& operator=(const char* pszText);
    string& operator=(const std::wstring& sText);
    string& operator=(const string& other);
    string& operator=(string&& other) noexcept;
    /// @}

    /// Returns the null-terminated text. The pointer is valid until the next change.
    [[nodiscard]] const wchar_t* c_str() const noexcept { return m_sText.c_str(); }
    /// Returns the null-terminated narrow copy, which the first call creates. The pointer is valid until the next
    /// change.
    [[nodiscard]] const char* narrow_c_str() const;
    /// Returns the number of characters, without the terminator.
    [[nodiscard]] std::size_t size() const noexcept { return m_sText.size(); }
    /// Tells whether the string has no characters.
    [[nodiscard]] bool empty() const noexcept { return m_sText.empty(); }

    /// \name Appending
    /// @{

    /// Appends the argument. Narrow text is converted.
    string& append(const wchar_t* pszText);
    string& append(const wchar_t* pText, std::size_t count);
    string& append(const string& other);
    string& operator+=(const wchar_t* pszText) { return append(pszText); }
    string& operator+=(const char* pszText) { return append(string(pszText)); }
    string& operator+=(const string& other) { return append(other); }
    string& operator+=(wchar_t character) { return append(&character, 1); }
    /// @}

    /// Returns the position of the first such character at or after `from`, or npos.
    [[nodiscard]] std::size_t find(wchar_t character, std::size_t from = 0) const noexcept;
    /// Returns the position of the first such text at or after `from`, or npos.
    [[nodiscard]] std::size_t find(const string& text, std::size_t from = 0) const noexcept;
    /// Returns the position of the last such character, or npos.
    [[nodiscard]] std::size_t rfind(wchar_t character) const noexcept;

    /// Removes up to `count` characters from `position` on.
    /// \throws std::out_of_range if `position` is beyond the end
    string& erase(std::size_t position = 0, std::size_t count = npos);

private:
    void ForgetNarrow() noexcept;

    std::wstring m_sText;
    mutable std::atomic<char*> m_pszNarrow;
};

/// Tells whether two strings are equal. Case matters.
ZELK_NM_API bool operator==(const string& left, const string& right) noexcept;
/// Tells whether `left` sorts before `right` by the values of the characters.
ZELK_NM_API bool operator<(const string& left, const string& right) noexcept;
/// Tells whether two strings differ. Case matters.
inline bool operator!=(const string& left, const string& right) noexcept
{
    return !(left == right);
}

/// Returns both texts joined.
inline string operator+(string left, const string& right)
{
    left.append(right);
    return left;
}

} // namespace velmor
