#include "address_record.h"

#include <string>

#include "json_value.h"
#include "word.h"

namespace zelkctl
{
namespace
{

constexpr Field FIELDS[] = {{"address", "Address"},      {"automatic", "Automatic"},    {"dadState", "DAD state"},
                            {"scopeZone", "Scope zone"}, {"scopeLevel", "Scope level"}, {"index", "Index"}};

constexpr Word DAD_STATES[] = {{IpDadStateInvalid, "Invalid"},
                               {IpDadStateTentative, "Tentative"},
                               {IpDadStateDuplicate, "Duplicate"},
                               {IpDadStateDeprecated, "Deprecated"},
                               {IpDadStatePreferred, "Preferred"}};

constexpr Word SCOPE_LEVELS[] = {{0, "n/a"},
                                 {ScopeLevelInterface, "Interface"},
                                 {ScopeLevelLink, "Link"},
                                 {ScopeLevelSubnet, "Subnet"},
                                 {ScopeLevelAdmin, "Admin"},
                                 {ScopeLevelSite, "Site"},
                                 {ScopeLevelOrganization, "Organisation"},
                                 {ScopeLevelGlobal, "Global"}};

} // namespace

Json RecordOf(const TOLVA::ASSOC_IP_ADDR& address)
{
    const unsigned long ulZone = address.ScopeId.Zone;
    Json record;
    record["address"] = NetworkOrNull(address.IpAddress, address.SubnetPrefix);
    record["automatic"] = address.bAutomatic;
    record["dadState"] = WordOf(DAD_STATES, static_cast<unsigned long>(address.enDadState));
    record["scopeZone"] = ulZone == 0 ? "Default" : std::to_string(ulZone);
    record["scopeLevel"] = WordOf(SCOPE_LEVELS, address.ScopeId.Level);
    record["index"] = address.ulIndex;
    return record;
}

std::span<const Field> AddressFields()
{
    return FIELDS;
}

} // namespace zelkctl
