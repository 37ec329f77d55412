#pragma once

#include <string>

#include <state/platform/handles.h>

namespace zelk
{

/// The folder in which the lock and the pending changes of this machine are kept, "ZELK\Changes" of the Windows
/// directory: ordinary users cannot write there, so that nobody can put anything in its place beforehand. It is there
/// in a boot image too.
/// @throws StateError when the system does not tell its directory.
std::wstring ChangeFolder();

/// Makes a folder, with those above it, in which only administrators and the system can read and write, unless it is
/// there, and checks that it is a real folder and nobody else can write to it.
/// @throws StateError otherwise.
void PrepareChangeFolder(const std::wstring& folder);

/// Whether nobody but administrators, the system and the account of this process owns the file or may change it.
bool IsOnlyForAdministrators(HANDLE file);

/// The security of new files and folders: all for administrators and the system, nothing for others.
class AdministratorsOnly
{
public:
    AdministratorsOnly();

    /// For the functions that create something; null where the system could not make it.
    [[nodiscard]] SECURITY_ATTRIBUTES* Get() noexcept { return m_descriptor ? &m_attributes : nullptr; }

private:
    std::unique_ptr<void, Release<::LocalFree>> m_descriptor;
    SECURITY_ATTRIBUTES m_attributes = {};
};

} // namespace zelk
