#include <new>

#include <backends/pre_vista_api.h>
#include <backends/vista_api.h>
#include <support/registry/environment.h>
#include <support/trace/call_frame.h>
#include <zelk_nm/tolva.h>

TOLVA::SockDrawer::SockDrawer() noexcept
{
    // Texts of addresses are parsed and formatted by Winsock. A failure shows in the calls that then fail.
    constexpr WORD VERSION_2_0 = 2;
    WSADATA data;
    ::WSAStartup(VERSION_2_0, &data);
}

TOLVA::SockDrawer::~SockDrawer()
{
    ::WSACleanup();
}

TOLVA::TOLVA()
{
    // Not a function try block: that of a constructor would throw on.
    try
    {
        TheTrace.ReadTraceLevel();
        TheTrace.ClearLog();
        const CallFrame frame = CallFrame::WithoutStart("TOLVA::TOLVA");
        frame.Verbose("Constructor");

        velmor::string sVersion;
        GetModuleProperty(TOLVA_GMP_VERSION, sVersion);
        frame.Information("sVersion", sVersion);
        velmor::string sDescription;
        GetModuleProperty(TOLVA_GMP_DESCRIPTION, sDescription);
        frame.Information("sDescription", sDescription);
    }
    catch (...)
    {
        CallFrame::WithoutStart("TOLVA::TOLVA").FailUnforeseen();
    }
}

TOLVA::~TOLVA()
{
    CallFrame::WithoutStart("TOLVA::~TOLVA").Verbose("Destructor");
}

TOLVA& TOLVA::operator=(const TOLVA&) = default;

AbstractNetworkAPI* TOLVA::NetworkApiFactory()
{
    const CallFrame frame = CallFrame::WithoutStart("TOLVA::NetworkApiFactory");
    if (GetWindowsMajorVersion() >= 6)
    {
        frame.Verbose("O/S is Vista or later");
        return new (std::nothrow) VistaAPI;
    }
    frame.Verbose("O/S is prior to Vista");
    return new (std::nothrow) PreVistaAPI;
}
