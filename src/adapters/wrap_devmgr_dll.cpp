#include <adapters/wrap_devmgr_dll.h>
#include <zelk_common/looked_up_functions.h>

namespace
{

constexpr LoadedFunctionTexts TEXTS = {.pszLibrary = zelk_common::DEVICE_MANAGER,
                                       .pszFunction = zelk_common::DEVICE_PROPERTIES,
                                       .pszConstructor = "TOLVA::Wrap_DEVMGR_DLL::Wrap_DEVMGR_DLL",
                                       .pszNoLibrary = "LoadLibrary('DEVMGR.DLL') failed",
                                       .pszNoFunction = "GetProcAddress('DeviceProperties_RunDLLW') failed",
                                       .pszDestructor = "TOLVA::Wrap_DEVMGR_DLL::~Wrap_DEVMGR_DLL",
                                       .pszFreed = "FreeLibrary('DEVMGR.DLL')"};

} // namespace

TOLVA::Wrap_DEVMGR_DLL::Wrap_DEVMGR_DLL() : m_deviceProperties(TEXTS) {}

void TOLVA::Wrap_DEVMGR_DLL::ShowProperties(const velmor::string& sCommandLine) const
{
    if (auto* const pDeviceProperties = m_deviceProperties.Get())
        pDeviceProperties(nullptr, nullptr, sCommandLine.c_str(), 0);
}
