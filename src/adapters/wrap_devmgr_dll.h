#pragma once

#include <support/operation/loaded_function.h>
#include <zelk_nm/tolva.h>

/// The device manager's property sheet, which only a full Windows has.
class TOLVA::Wrap_DEVMGR_DLL
{
public:
    Wrap_DEVMGR_DLL();

    /// Shows the sheet and blocks until it is closed. Does nothing where there is none.
    void ShowProperties(const velmor::string& sCommandLine) const;

private:
    using DeviceProperties_RunDLLW = void WINAPI(HWND hwndOwner, HINSTANCE hInstance, const wchar_t* pszCommandLine,
                                                 int nShow);

    LoadedFunction<DeviceProperties_RunDLLW> m_deviceProperties;
};
