#include <state/fields/words.h>

namespace zelk
{
namespace
{

constexpr Word<BackEnd> BACK_ENDS[] = {{{"vista", "Vista and later"}, BackEnd::VISTA},
                                       {{"preVista", "Before Vista"}, BackEnd::PRE_VISTA}};

constexpr Word<Membership> MEMBERSHIPS[] = {{{"workgroup", "Workgroup"}, Membership::WORKGROUP},
                                            {{"domain", "Domain member"}, Membership::DOMAIN_MEMBER},
                                            {{"domainController", "Domain controller"}, Membership::DOMAIN_CONTROLLER}};

constexpr Word<RouteStore> ROUTE_STORES[] = {{{"active", "Active"}, RouteStore::ACTIVE},
                                             {{"persistent", "Persistent"}, RouteStore::PERSISTENT},
                                             {{"both", "Active and persistent"}, RouteStore::BOTH}};

constexpr Word<RouteOrigin> ROUTE_ORIGINS[] = {{{"manual", "Manual"}, RouteOrigin::MANUAL},
                                               {{"wellKnown", "Well-known"}, RouteOrigin::WELL_KNOWN},
                                               {{"dhcp", "DHCP"}, RouteOrigin::DHCP},
                                               {{"router", "Router"}, RouteOrigin::ROUTER},
                                               {{"6to4", "6to4"}, RouteOrigin::SIX_TO_FOUR}};

constexpr Word<RouteProtocol> ROUTE_PROTOCOLS[] = {{{"other", "Other"}, RouteProtocol::OTHER},
                                                   {{"local", "Local"}, RouteProtocol::LOCAL},
                                                   {{"management", "Management"}, RouteProtocol::MANAGEMENT},
                                                   {{"icmp", "ICMP"}, RouteProtocol::ICMP}};

constexpr Word<AddressOrigin> ADDRESS_ORIGINS[] = {{{"other", "Other"}, AddressOrigin::OTHER},
                                                   {{"manual", "Manual"}, AddressOrigin::MANUAL},
                                                   {{"wellKnown", "Well-known"}, AddressOrigin::WELL_KNOWN},
                                                   {{"dhcp", "DHCP"}, AddressOrigin::DHCP},
                                                   {{"router", "Router"}, AddressOrigin::ROUTER},
                                                   {{"linkLayer", "Link-layer"}, AddressOrigin::LINK_LAYER},
                                                   {{"random", "Random"}, AddressOrigin::RANDOM}};

constexpr Word<DadState> DAD_STATES[] = {{{"invalid", "Invalid"}, DadState::INVALID},
                                         {{"tentative", "Tentative"}, DadState::TENTATIVE},
                                         {{"duplicate", "Duplicate"}, DadState::DUPLICATE},
                                         {{"deprecated", "Deprecated"}, DadState::DEPRECATED},
                                         {{"preferred", "Preferred"}, DadState::PREFERRED}};

constexpr Word<NetbiosSetting> NETBIOS_SETTINGS[] = {{{"dhcp", "As DHCP says"}, NetbiosSetting::DHCP},
                                                     {{"enabled", "Enabled"}, NetbiosSetting::ENABLED},
                                                     {{"disabled", "Disabled"}, NetbiosSetting::DISABLED}};

constexpr Word<ConfigurationSource> SOURCES[] = {
    {{"persistent", "Stored settings"}, ConfigurationSource::PERSISTENT},
    {{"active", "Concluded from what is in use"}, ConfigurationSource::ACTIVE}};

constexpr Word<AdapterType> ADAPTER_TYPES[] = {{{"other", "Other"}, AdapterType::OTHER},
                                               {{"ethernet", "Ethernet"}, AdapterType::ETHERNET},
                                               {{"tokenRing", "Token Ring"}, AdapterType::TOKEN_RING},
                                               {{"fddi", "FDDI"}, AdapterType::FDDI},
                                               {{"ppp", "PPP"}, AdapterType::PPP},
                                               {{"loopback", "Loopback"}, AdapterType::LOOPBACK},
                                               {{"slip", "SLIP"}, AdapterType::SLIP},
                                               {{"wireless", "Wireless"}, AdapterType::WIRELESS},
                                               {{"tunnel", "Tunnel"}, AdapterType::TUNNEL}};

constexpr Word<AdapterKind> ADAPTER_KINDS[] = {{{"physical", "Physical"}, AdapterKind::PHYSICAL},
                                               {{"virtual", "Virtual"}, AdapterKind::VIRTUAL}};

constexpr Word<AdapterStatus> ADAPTER_STATES[] = {
    {{"unknown", "Unknown"}, AdapterStatus::UNKNOWN},
    {{"up", "Up"}, AdapterStatus::UP},
    {{"down", "Down"}, AdapterStatus::DOWN},
    {{"testing", "Testing"}, AdapterStatus::TESTING},
    {{"dormant", "Dormant"}, AdapterStatus::DORMANT},
    {{"notPresent", "Not present"}, AdapterStatus::NOT_PRESENT},
    {{"lowerLayerDown", "Lower layer down"}, AdapterStatus::LOWER_LAYER_DOWN},
    {{"unplugged", "Unplugged"}, AdapterStatus::UNPLUGGED},
    {{"disabled", "Disabled"}, AdapterStatus::DISABLED},
    {{"failed", "Failed"}, AdapterStatus::FAILED}};

} // namespace

template <>
std::span<const Word<BackEnd>> WordsOf()
{
    return BACK_ENDS;
}

template <>
std::span<const Word<Membership>> WordsOf()
{
    return MEMBERSHIPS;
}

template <>
std::span<const Word<RouteStore>> WordsOf()
{
    return ROUTE_STORES;
}

template <>
std::span<const Word<RouteOrigin>> WordsOf()
{
    return ROUTE_ORIGINS;
}

template <>
std::span<const Word<RouteProtocol>> WordsOf()
{
    return ROUTE_PROTOCOLS;
}

template <>
std::span<const Word<AddressOrigin>> WordsOf()
{
    return ADDRESS_ORIGINS;
}

template <>
std::span<const Word<DadState>> WordsOf()
{
    return DAD_STATES;
}

template <>
std::span<const Word<NetbiosSetting>> WordsOf()
{
    return NETBIOS_SETTINGS;
}

template <>
std::span<const Word<ConfigurationSource>> WordsOf()
{
    return SOURCES;
}

template <>
std::span<const Word<AdapterType>> WordsOf()
{
    return ADAPTER_TYPES;
}

template <>
std::span<const Word<AdapterKind>> WordsOf()
{
    return ADAPTER_KINDS;
}

template <>
std::span<const Word<AdapterStatus>> WordsOf()
{
    return ADAPTER_STATES;
}

} // namespace zelk
