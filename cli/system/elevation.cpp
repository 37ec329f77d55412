#include "system/elevation.h"

#include <state/platform/elevation.h>

namespace zelkctl
{

bool IsElevated()
{
    return zelk::IsElevated().value_or(false);
}

} // namespace zelkctl
