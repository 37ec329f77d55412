// Frame: the library as a module: what happens while it is loaded and unloaded, the choice of a back end, and those
// operations that belong to no adapter.
//
// All namespace-scope objects of the library that have constructors, in the order in which loading builds them;
// unloading destroys them in reverse. Nothing else in the library may add one: the order here is the only one there is.

#include <frame/module_statics.h>

#include <backends/abstract_network_api.h>
#include <support/registry/environment.h>
#include <support/registry/registry_paths.h>
#include <support/trace/trace.h>
#include <zelk_common/trace_files.h>
#include <zelk_nm/tolva.h>

namespace
{

constinit bool bBuilt = true;

/// A text for good. An exception must not leave the entry point of the library: the loader would never return.
velmor::string Constant(const wchar_t* pszText) noexcept
try
{
    return pszText;
}
catch (...)
{
    bBuilt = false;
    return {};
}

} // namespace

bool HasModuleStatics() noexcept
{
    return bBuilt;
}

// First and so last to go: every other object may trace until its end.
CTrace TheTrace(zelk_common::TRACE_FILE, zelk_common::TRACE_KEY, 7);

const velmor::string TCPIP_PARAMETERS = Constant(L"CurrentControlSet\\services\\Tcpip\\Parameters");
const velmor::string TCPIP_INTERFACES = Constant(L"CurrentControlSet\\services\\Tcpip\\Parameters\\Interfaces");
const velmor::string TCPIP6_INTERFACES = Constant(L"CurrentControlSet\\services\\Tcpip6\\Parameters\\Interfaces");
const velmor::string NETWORK_CLASS =
    Constant(L"CurrentControlSet\\Control\\Class\\{4D36E972-E325-11CE-BFC1-08002BE10318}");
const velmor::string NETWORK_CONNECTIONS =
    Constant(L"CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}");

const TOLVA::SockDrawer TOLVA::sd;

std::unique_ptr<AbstractNetworkAPI> TOLVA::m_pNetworkAPI(TOLVA::NetworkApiFactory());

const velmor::string velmor::BANNER_LEFT(L"** ");
const velmor::string velmor::BANNER_RIGHT(L" **");

namespace
{

// The trace log needed the environment before anything else was built. Now that everything is, this answer replaces it.
[[maybe_unused]] const bool bEnvironmentDetectedAgain = (DetectWindowsEnvironment(), true);

} // namespace
