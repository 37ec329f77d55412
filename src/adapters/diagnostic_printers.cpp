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

// The buffer alone is written to: the stream's own formatting would make the library several times larger.
void Put(std::wofstream& ofs, std::wstring_view text)
{
    ofs.rdbuf()->sputn(text.data(), static_cast<std::streamsize>(text.size()));
}

void PutNumber(std::wofstream& ofs, unsigned long value)
{
    const std::string sDigits = std::to_string(value);
    Put(ofs, std::wstring(sDigits.begin(), sDigits.end()));
}

template <std::size_t N>
void PutWord(std::wofstream& ofs, const Word (&words)[N], unsigned long value)
{
    for (const Word& word : words)
        if (word.value == value)
            return Put(ofs, word.text);
    Put(ofs, L"Unknown : ");
    PutNumber(ofs, value);
}

} // namespace

void TOLVA::PrintAdapterStatus(std::wofstream& ofs, TOLVA_OPER_STATUS enOperStatus)
{
    PutWord(ofs, STATUS_WORDS, enOperStatus);
}

void TOLVA::PrintDadState(std::wofstream& ofs, NL_DAD_STATE enDadState)
{
    PutWord(ofs, DAD_WORDS, static_cast<unsigned long>(enDadState));
}

void TOLVA::PrintScopeId(std::wofstream& ofs, const SCOPE_ID& ScopeId)
{
    Put(ofs, L"Zone = ");
    if (ScopeId.Zone == 0)
        Put(ofs, L"Default");
    else
        PutNumber(ofs, ScopeId.Zone);
    Put(ofs, L", Level = ");
    PutWord(ofs, SCOPE_WORDS, ScopeId.Level);
}
