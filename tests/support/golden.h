#pragma once

#include <charconv>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <support/registry_scope.h>
#include <zelk_nm/tolva.h>

namespace testing_support
{

// How golden texts and messages show a value.
std::string Show(std::wstring_view sText); ///< as UTF-8
inline std::string Show(const std::wstring& sText)
{
    return Show(std::wstring_view(sText));
}
std::string Show(const velmor::string& sText);
std::string Show(const velmor::ip_address& address);
inline std::string Show(const TOLVA::HARDWARE_ADDRESS& address)
{
    return Show(static_cast<velmor::string>(address));
}
std::string Show(const RegistryData& data); ///< such as REG_SZ "text"
std::string Show(const TOLVA::ROUTE_INFO& route);
std::string Show(const TOLVA::ASSOC_IP_ADDR& address);
/// Its texts in the order of GUID, device name, description, friendly name, class subkey, device, type and hardware
/// address.
std::string Show(const TOLVA::NIC_INFO& NicInfo);
inline std::string Show(bool bValue)
{
    return bValue ? "true" : "false";
}
inline std::string Show(const std::string& sText)
{
    return sText;
}
inline std::string Show(const char* pszText)
{
    return pszText;
}
inline std::string Show(const wchar_t* pszText)
{
    return Show(std::wstring_view(pszText));
}
template <class Number>
requires(std::is_arithmetic_v<Number> || std::is_enum_v<Number>) std::string Show(Number value)
{
    char text[32];
    return {text, std::to_chars(text, std::end(text), +value).ptr};
}
template <class T>
std::string Show(const std::vector<T>& list)
{
    std::string sAll;
    for (const T& element : list)
        sAll += (sAll.empty() ? "[" : ", ") + Show(element);
    return sAll.empty() ? "[]" : sAll + ']';
}
/// Several values in one line, separated by blanks.
template <class First, class... Rest>
requires(sizeof...(Rest) > 0) std::string Show(const First& first, const Rest&... rest)
{
    return (Show(first) + ... + (' ' + Show(rest)));
}

/// The text that a case writes down, line by line, compared at the end of the scope with the file of the case's name in
/// the folder "golden" beside the program. What differs from machine to machine or run to run is to be replaced before.
/// With ZELK_GOLDEN=write in the environment the files are written instead of compared.
class Golden
{
public:
    /// The running case's file; with a part, that of one of several texts of the case.
    explicit Golden(const std::string& sPart = {});
    Golden(const Golden&) = delete;
    Golden& operator=(const Golden&) = delete;
    ~Golden() { Compare(); }

    template <class... Values>
    void Line(const Values&... values)
    {
        m_sText += Show(values...) + '\n';
    }
    void Lines(const std::vector<std::string>& lines);
    /// Fails the test where the text is not the file's, with the lines that differ, and begins a new text. Nothing is
    /// compared when nothing was written.
    void Compare();

private:
    std::string m_sPart;
    std::string m_sText;
};

/// Holds the running case's golden file as a transcript: what follows each line that begins with "$ " has to be the
/// answer to the rest of that line. Lines that begin with "# " explain it to the reader. A new question is a new line
/// in the file, and ZELK_GOLDEN=write writes the answer below it.
void ExpectTranscript(const std::function<std::string(const std::string& sQuestion)>& answer,
                      const std::string& sPart = {});

} // namespace testing_support
