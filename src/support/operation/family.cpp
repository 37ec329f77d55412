#include <support/operation/family.h>

const char* FamilyText(TOLVA::FAMILY_TYPE enFamilyType) noexcept
{
    switch (enFamilyType)
    {
    case TOLVA::FAMILY_IPV4: return "IPv4";
    case TOLVA::FAMILY_IPV6: return "IPv6";
    case TOLVA::FAMILY_BOTH: return "IPv4 and IPv6";
    }
    return nullptr;
}

bool CheckFamily(const CallFrame& frame, TOLVA::FAMILY_TYPE enFamilyType) noexcept
{
    const char* pszFamily = FamilyText(enFamilyType);
    if (pszFamily == nullptr)
        return frame.Fail("Unknown address family", "enFamilyType", enFamilyType);
    frame.Verbose(pszFamily);
    return true;
}
