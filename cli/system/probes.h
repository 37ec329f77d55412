#pragma once

#include <string>

namespace zelkctl
{

// What can be found out about this system only by trying.
bool HasFunction(const wchar_t* pszModule, const char* pszFunction);

/// Whether the command interpreter, by which the library runs commands, finds this one.
bool HasCommand(const wchar_t* pszCommand);

/// Whether a file can be created in the directory.
bool IsWritable(const std::wstring& sDirectory);

} // namespace zelkctl
