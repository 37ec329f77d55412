#pragma once

#include <source_location>
#include <string_view>

#include <state/plan/plan.h>

namespace fuzz
{

/// Gives one text to a parser and checks what has to hold for every text. Each target defines it.
void Try(std::string_view text);

/// Ends the program, and with it the search, where something does not hold.
void Require(bool holds, std::source_location where = std::source_location::current());

/// The text up to the separator, which is taken off with it; the rest where there is none.
std::string_view TakeUntil(std::string_view& text, char separator);

/// A machine with two adapters, lan0 and lan1, of which the first one is configured.
const zelk::Machine& SmallMachine();

/// What holds for every plan that has no fault: its steps can be done and shown, and a report takes it.
void CheckPlan(const zelk::Plan& plan);

} // namespace fuzz
