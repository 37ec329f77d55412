#include "verbs/version.h"

#include <zelk_nm/tolva.h>

#include "adapters/library_call.h"
#include "system/text.h"

namespace zelkctl
{
namespace
{

std::string ModuleProperty(TOLVA::TOLVA_GMP_CAT category)
{
    velmor::string value;
    Call("GetModuleProperty", nullptr,
         [&] { return TOLVA::GetModuleProperty(category, value) == 0 && value != velmor::string(L"Error"); });
    return ToUtf8(value);
}

} // namespace

std::string VersionNumber()
{
    return ModuleProperty(TOLVA::TOLVA_GMP_VERSION);
}

std::string VersionText()
{
    return "ZELK_NM.DLL " + VersionNumber() + '\n' + ModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION);
}

} // namespace zelkctl
