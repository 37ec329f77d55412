#pragma once

#include <string>

#include <winsock2.h>

#include <windows.h>

namespace zelk
{

/// The full path of a module of this process, which for null is the program. Empty, with the thread's last error, where
/// the system does not tell.
std::wstring ModuleFile(HMODULE module);

} // namespace zelk
