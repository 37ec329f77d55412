#include <backends/vista_descriptions.h>

#include <algorithm>
#include <iterator>

namespace
{

struct Description
{
    unsigned int value;
    const char* pszText;
};

// A level has four bits, so the last row never applies; it completes the platform's enumeration.
constexpr Description SCOPE_LEVELS[] = {
    {1, "The scope level is Interface-Local"}, {2, "The scope level is Link-Local"},
    {3, "The scope level is Subnet"},          {4, "The scope level is Admin-Local"},
    {5, "The scope level is Site-Local"},      {8, "The scope level is Organization-Local"},
    {14, "The scope level is Global"},         {16, "The scope level is Count"}};

constexpr Description DAD_STATES[] = {{0, "The DAD state is invalid"},
                                      {1, "The DAD state is tentative"},
                                      {2, "A duplicate IP address has been detected"},
                                      {3, "The IP address has been deprecated"},
                                      {4, "The IP address is the preferred address"}};

constexpr Description PREFIX_ORIGINS[] = {{0, "Prefix Origin : Other"},
                                          {1, "Prefix Origin : Manual"},
                                          {2, "Prefix Origin : Well Known"},
                                          {3, "Prefix Origin : DHCP"},
                                          {4, "Prefix Origin : Router Advertisement"},
                                          {16, "Prefix Origin : Unchanged"}};

constexpr Description SUFFIX_ORIGINS[] = {{0, "Suffix Origin : Other"},
                                          {1, "Suffix Origin : Manual"},
                                          {2, "Suffix Origin : Well Known"},
                                          {3, "Suffix Origin : DHCP"},
                                          {4, "Suffix Origin : Link Layer Address"},
                                          {5, "Suffix Origin : Random"},
                                          {16, "Suffix Origin : Unchanged"}};

struct Unknown
{
    TRACE_LEVEL level;
    const char* pszText;
    const char* pszVariable;
};

template <std::size_t N>
void Describe(const CallFrame& frame, const Description (&rows)[N], unsigned int value, const Unknown& unknown)
{
    const auto* pRow =
        std::find_if(std::begin(rows), std::end(rows), [value](const Description& row) { return row.value == value; });
    if (pRow != std::end(rows))
        frame.Verbose(pRow->pszText);
    else
        frame.Say(unknown.level, unknown.pszText, unknown.pszVariable, value);
}

} // namespace

void DescribeScope(const CallFrame& frame, const SCOPE_ID& ScopeId)
{
    Describe(frame, SCOPE_LEVELS, ScopeId.Level,
             {TRACE_VERBOSE, "The scope level is <reserved>", "AssocIpAddr.ScopeId.Level"});
    frame.Verbose("AssocIpAddr.ScopeId.Zone", static_cast<unsigned int>(ScopeId.Zone));
    frame.Verbose("AssocIpAddr.ScopeId.Level", static_cast<unsigned int>(ScopeId.Level));
}

void DescribeDadState(const CallFrame& frame, NL_DAD_STATE enDadState)
{
    Describe(frame, DAD_STATES, static_cast<unsigned int>(enDadState),
             {TRACE_WARNING, "The DAD state is unknown", "AssocIpAddr.enDadState"});
}

void DescribePrefixOrigin(const CallFrame& frame, NL_PREFIX_ORIGIN origin)
{
    Describe(frame, PREFIX_ORIGINS, static_cast<unsigned int>(origin),
             {TRACE_WARNING, "Prefix Origin : Unknown", "pipTable->Table[ i ].PrefixOrigin"});
}

void DescribeSuffixOrigin(const CallFrame& frame, NL_SUFFIX_ORIGIN origin)
{
    Describe(frame, SUFFIX_ORIGINS, static_cast<unsigned int>(origin),
             {TRACE_WARNING, "Suffix Origin : Unknown", "pipTable->Table[ i ].SuffixOrigin"});
}
