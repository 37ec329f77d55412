#pragma once

// The parser of command lines by its name alone: its header takes seconds to compile, and a noun needs none of it.
namespace CLI
{
class App;
}
