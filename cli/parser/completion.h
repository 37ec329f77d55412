#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace zelkctl
{

/// The values that an argument of this name can have, where the parser does not know them; `sBegun` is what is typed.
using ValuesOf = std::function<std::vector<std::string>(const std::string& sArgument, const std::string& sBegun)>;

/// What the last word of a command line, which is given without the tool's own name, can become. Empty where nothing is
/// known.
std::vector<std::string> Complete(const CLI::App& tool, const std::vector<std::string>& words,
                                  const ValuesOf& valuesOf);

} // namespace zelkctl
