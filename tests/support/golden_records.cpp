#include <support/golden.h>

// In a file of its own: programs that do not link the library take the rest of the golden texts without it.

namespace testing_support
{

std::string Show(const velmor::string& sText)
{
    return Show(std::wstring_view(sText.c_str(), sText.size()));
}

std::string Show(const velmor::ip_address& address)
{
    return address.is_valid() ? Show(velmor::string(address)) : "<invalid>";
}

std::string Show(const TOLVA::ROUTE_INFO& route)
{
    return Show(route.Destination, "prefix", route.PrefixLength, "via", route.NextHop, "if", route.ulIndex, "metric",
                route.ulMetric);
}

std::string Show(const TOLVA::ASSOC_IP_ADDR& address)
{
    return Show(address.IpAddress, "prefix", address.SubnetPrefix, "if", address.ulIndex,
                address.bAutomatic ? "automatic" : "manual", "dad", static_cast<int>(address.enDadState), "scope",
                address.ScopeId.Value);
}

std::string Show(const TOLVA::NIC_INFO& NicInfo)
{
    std::string sAll;
    for (const auto* p : {&NicInfo.sNicGuid, &NicInfo.sNicName, &NicInfo.sNicDesc, &NicInfo.sNicFriendlyName,
                          &NicInfo.sNicEnum, &NicInfo.sNicPci, &NicInfo.sNicType, &NicInfo.sNicHwAddr})
        sAll += (sAll.empty() ? "" : "|") + Show(*p);
    return sAll;
}

} // namespace testing_support
