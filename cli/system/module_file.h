#pragma once

#include <string>

namespace zelkctl
{

/// The full path of a module of this process; of the program itself for null. Throws SystemError.
std::wstring ModuleFile(const wchar_t* pszModule);

} // namespace zelkctl
