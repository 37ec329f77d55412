#pragma once

#include <support/platform/handles.h>
#include <zelk_nm/tolva.h>

/// The device manager's property sheet, which only a full Windows has.
class TOLVA::Wrap_DEVMGR_DLL
{
public:
    Wrap_DEVMGR_DLL();
    ~Wrap_DEVMGR_DLL();
    Wrap_DEVMGR_DLL(const Wrap_DEVMGR_DLL&) = delete;
    Wrap_DEVMGR_DLL& operator=(const Wrap_DEVMGR_DLL&) = delete;

    /// Shows the sheet and blocks until it is closed. Does nothing where there is none.
    void ShowProperties(const velmor::string& sCommandLine) const;

private:
    using DeviceProperties_RunDLLW = void WINAPI(HWND hwndOwner, HINSTANCE hInstance, const wchar_t* pszCommandLine,
                                                 int nShow);

    velmor::UniqueModule m_hModule;
    DeviceProperties_RunDLLW* m_pDeviceProperties = nullptr;
};
