#include <state/answers/library_version.h>

#include <zelk_nm/tolva.h>

#include <state/platform/utf8.h>

namespace zelk
{
namespace
{

std::string ModuleProperty(TOLVA::TOLVA_GMP_CAT category)
{
    velmor::string value;
    const bool known = TOLVA::GetModuleProperty(category, value) == 0 && value != velmor::string(L"Error");
    return known ? ToUtf8(value.c_str()) : std::string();
}

} // namespace

LibraryVersion ReadLibraryVersion()
{
    return {ModuleProperty(TOLVA::TOLVA_GMP_VERSION), ModuleProperty(TOLVA::TOLVA_GMP_DESCRIPTION)};
}

Json ToJson(const LibraryVersion& version)
{
    return {{"version", version.version}, {"description", version.description}};
}

} // namespace zelk
