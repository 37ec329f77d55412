#include "doctor/library_version.h"

#include <zelk_nm/tolva.h>

#include "adapters/library_call.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

std::string ModuleProperty(TOLVA::TOLVA_GMP_CAT category)
{
    velmor::string value;
    Call("GetModuleProperty", nullptr,
         [&] { return TOLVA::GetModuleProperty(category, value) == 0 && value != velmor::string(L"Error"); });
    return ToUtf8(value.c_str());
}

} // namespace

std::string LibraryVersion()
{
    return ModuleProperty(TOLVA::TOLVA_GMP_VERSION);
}

std::string LibraryDescription()
{
    return ModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION);
}

} // namespace zelkctl
