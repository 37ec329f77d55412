#include <adapters/wrap_devmgr_dll.h>

#include <support/platform/module_function.h>
#include <support/trace/call_frame.h>

TOLVA::Wrap_DEVMGR_DLL::Wrap_DEVMGR_DLL() : m_hModule(::LoadLibraryW(L"DEVMGR.DLL"))
{
    const CallFrame frame = CallFrame::WithoutStart("TOLVA::Wrap_DEVMGR_DLL::Wrap_DEVMGR_DLL");
    if (!m_hModule)
    {
        frame.Error("LoadLibrary('DEVMGR.DLL') failed", "dwLastError", ::GetLastError());
        return;
    }
    m_pDeviceProperties = velmor::FindFunction<DeviceProperties_RunDLLW>(m_hModule.Get(), "DeviceProperties_RunDLLW");
    if (m_pDeviceProperties == nullptr)
        frame.Error("GetProcAddress('DeviceProperties_RunDLLW') failed", "dwLastError", ::GetLastError());
}

TOLVA::Wrap_DEVMGR_DLL::~Wrap_DEVMGR_DLL()
{
    if (m_hModule)
        CallFrame::WithoutStart("TOLVA::Wrap_DEVMGR_DLL::~Wrap_DEVMGR_DLL").Verbose("FreeLibrary('DEVMGR.DLL')");
}

void TOLVA::Wrap_DEVMGR_DLL::ShowProperties(const velmor::string& sCommandLine) const
{
    if (m_pDeviceProperties != nullptr)
        m_pDeviceProperties(nullptr, nullptr, sCommandLine.c_str(), 0);
}
