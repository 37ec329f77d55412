#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "answer/answer.h"
#include "answer/form.h"

namespace zelkctl
{

/// A command and the JSON Schema of its result.
using CommandSchema = std::pair<std::string, std::function<Json()>>;

/// What the user asks for: the outcome of reading a command line.
struct Request
{
    std::string sCommand; ///< the words that chose it, such as "adapter list"
    Form form;
    std::function<Answer()> answer; ///< does what is asked

    std::vector<CommandSchema> schemas; ///< of all commands that there are
};

} // namespace zelkctl
