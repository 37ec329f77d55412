#pragma once

#include <nlohmann/json.hpp>

namespace zelk
{

/// The order of an object's members is that of the field table that it comes from.
using Json = nlohmann::ordered_json;

} // namespace zelk
