#include "doctor/library_version.h"

#include "adapters/library_call.h"

namespace zelkctl
{

zelk::LibraryVersion ReadLibraryVersion()
{
    zelk::LibraryVersion version;
    Call("GetModuleProperty", nullptr, [&] {
        version = zelk::ReadLibraryVersion();
        return !version.version.empty() && !version.description.empty();
    });
    return version;
}

} // namespace zelkctl
