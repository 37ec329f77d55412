#include <backends/vista_api.h>

#include <support/call_frame.h>

bool VistaAPI::GetAdapterRoutes(const TOLVA::NIC_INFO&, std::vector<TOLVA::ROUTE_INFO>&)
{
    return CallFrame("VistaAPI::GetAdapterRoutes").FailAs("not built yet");
}

bool VistaAPI::AddAdapterRoute(const TOLVA::NIC_INFO&, const TOLVA::ROUTE_INFO&)
{
    return CallFrame("VistaAPI::AddAdapterRoute").FailAs("not built yet");
}

bool VistaAPI::GetAdaptersIpAddrs(const TOLVA::NIC_INFO&, std::vector<TOLVA::ASSOC_IP_ADDR>&)
{
    return CallFrame("VistaAPI::GetAdaptersIpAddrs").FailAs("not built yet");
}

bool VistaAPI::SetDefaultGateway(const TOLVA::NIC_INFO&, const velmor::ip_address&)
{
    return CallFrame("VistaAPI::SetDefaultGateway").FailAs("not built yet");
}

bool VistaAPI::AddIpAddr(const TOLVA::NIC_INFO&, const TOLVA::ASSOC_IP_ADDR&)
{
    return CallFrame("VistaAPI::AddIpAddr").FailAs("not built yet");
}

bool VistaAPI::DeleteIpAddr(const TOLVA::NIC_INFO&, const TOLVA::ASSOC_IP_ADDR&)
{
    return CallFrame("VistaAPI::DeleteIpAddr").FailAs("not built yet");
}

unsigned long VistaAPI::GetTcp6Table(MIB_TCP6TABLE*, unsigned long*, bool)
{
    CallFrame("VistaAPI::GetTcp6Table").FailAs("not built yet");
    return ERROR_INVALID_FUNCTION;
}
