#pragma once

#include <string>

#include <support/registry_scope.h>

/// An adapter that is installed and does not run, for one scope: what Windows's installer writes.
class InstalledAdapter
{
public:
    explicit InstalledAdapter(const std::wstring& sName)
        : m_class(CONTROL + L"Class" + NETWORK + L"\\0777"),
          m_connection(CONTROL + L"Network" + NETWORK + L"\\" + GUID + L"\\Connection")
    {
        using testing_support::StringData;
        m_class.Set(L"", L"NetCfgInstanceId", StringData(GUID));
        m_class.Set(L"", L"DriverDesc", StringData(L"Card"));
        m_class.Set(L"", L"DeviceInstanceID", StringData(DEVICE));
        m_connection.Set(L"", L"Name", StringData(sName));
        m_connection.Set(L"", L"PnpInstanceID", StringData(DEVICE));
    }

    static inline const std::wstring GUID = L"{00000777-0000-0000-0000-0000000000AA}";

private:
    static inline const std::wstring CONTROL = L"SYSTEM\\CurrentControlSet\\Control\\";
    static inline const std::wstring NETWORK = L"\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
    static inline const std::wstring DEVICE = L"ROOT\\NET\\0777";

    testing_support::RegistryKeyScope m_class, m_connection;
};
