#pragma once

// What the programs of ./torture have in common: their arguments, their figures and how they end.

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>

namespace torture
{

/// The second argument of a step: the seconds that it may take, 0 for all of its work. The first one is the seed of its
/// random choices.
inline std::chrono::seconds TimeFor(int argc, wchar_t** argv)
{
    return std::chrono::seconds(argc > 2 ? std::wcstoul(argv[2], nullptr, 10) : 0);
}

template <class Value>
void Figure(const char* name, const Value& value)
{
    std::cout << name << '\t' << value << std::endl; // at once: who waits sees how far it is
}

/// Ends the step where something is not as it should be.
inline void Check(bool right, const std::string& wrong)
{
    if (right)
        return;
    std::cerr << wrong << std::endl;
    std::exit(1);
}

} // namespace torture
