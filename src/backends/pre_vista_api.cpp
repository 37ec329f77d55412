#include <backends/pre_vista_api.h>

#include <support/call_frame.h>

bool PreVistaAPI::GetAdapterRoutes(const TOLVA::NIC_INFO&, std::vector<TOLVA::ROUTE_INFO>&)
{
    return CallFrame("PreVistaAPI::GetAdapterRoutes").FailAs("not built yet");
}

bool PreVistaAPI::AddAdapterRoute(const TOLVA::NIC_INFO&, const TOLVA::ROUTE_INFO&)
{
    return CallFrame("PreVistaAPI::AddAdapterRoute").FailAs("not built yet");
}

bool PreVistaAPI::GetAdaptersIpAddrs(const TOLVA::NIC_INFO&, std::vector<TOLVA::ASSOC_IP_ADDR>&)
{
    return CallFrame("PreVistaAPI::GetAdaptersIpAddrs").FailAs("not built yet");
}

bool PreVistaAPI::SetDefaultGateway(const TOLVA::NIC_INFO&, const velmor::ip_address&)
{
    return CallFrame("PreVistaAPI::SetDefaultGateway").FailAs("not built yet");
}

bool PreVistaAPI::AddIpAddr(const TOLVA::NIC_INFO&, const TOLVA::ASSOC_IP_ADDR&)
{
    return CallFrame("PreVistaAPI::AddIpAddr").FailAs("not built yet");
}

bool PreVistaAPI::DeleteIpAddr(const TOLVA::NIC_INFO&, const TOLVA::ASSOC_IP_ADDR&)
{
    return CallFrame("PreVistaAPI::DeleteIpAddr").FailAs("not built yet");
}

unsigned long PreVistaAPI::GetTcp6Table(MIB_TCP6TABLE*, unsigned long*, bool)
{
    CallFrame("PreVistaAPI::GetTcp6Table").FailAs("not built yet");
    return ERROR_INVALID_FUNCTION;
}
