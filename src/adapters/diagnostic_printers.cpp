#include <fstream>
#include <string>
#include <string_view>

#include <zelk_nm/tolva.h>

namespace
{

struct Word
{
    unsigned long value;
    std::wstring_view text;
};

constexpr Word STATUS_WORDS[] = {{1, L"Up"},      {2, L"Down"},        {3, L"Testing"},         {4, L"Unknown"},
                                 {5, L"Dormant"}, {6, L"Not Present"}, {7, L"Lower-Layer Down"}};
constexpr Word DAD_WORDS[] = {
    {0, L"Invalid"}, {1, L"Tentative"}, {2, L"Duplicate"}, {3, L"Deprecated"}, {4, L"Preferred"}};
constexpr Word SCOPE_WORDS[] = {{0, L"n/a"},  {1, L"Interface"},    {2, L"Link"},    {3, L"Subnet"}, {4, L"Admin"},
                                {5, L"Site"}, {8, L"Organisation"}, {14, L"Global"}, {16, L"Count"}};

std::wstring Number(unsigned long value)
{
    const std::string sDigits = std::to_string(value);
    return std::wstring(sDigits.begin(), sDigits.end());
}

template <std::size_t N>
std::wstring WordFor(const Word (&words)[N], unsigned long value)
{
    for (const Word& word : words)
        if (word.value == value)
            return std::wstring(word.text);
    return L"Unknown : " + Number(value);
}

/// Puts what `compose` makes into the stream's buffer alone: the stream's own formatting would make the library several
/// times larger. What cannot be printed is lost.
template <class Compose>
void Print(std::wofstream& ofs, Compose&& compose) noexcept
try
{
    const std::wstring sText = compose();
    ofs.rdbuf()->sputn(sText.data(), static_cast<std::streamsize>(sText.size()));
}
catch (...)
{
}

} // namespace

void TOLVA::PrintAdapterStatus(std::wofstream& ofs, TOLVA_OPER_STATUS enOperStatus)
{
    Print(ofs, [&] { return WordFor(STATUS_WORDS, enOperStatus); });
}

void TOLVA::PrintDadState(std::wofstream& ofs, NL_DAD_STATE enDadState)
{
    Print(ofs, [&] { return WordFor(DAD_WORDS, static_cast<unsigned long>(enDadState)); });
}

void TOLVA::PrintScopeId(std::wofstream& ofs, const SCOPE_ID& ScopeId)
{
    Print(ofs, [&] {
        const std::wstring sZone = ScopeId.Zone == 0 ? L"Default" : Number(ScopeId.Zone);
        return L"Zone = " + sZone + L", Level = " + WordFor(SCOPE_WORDS, ScopeId.Level);
    });
}
