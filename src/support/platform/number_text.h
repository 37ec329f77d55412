#pragma once

#include <string>

namespace velmor
{

// Numbers as text with a decimal point, whatever locale the host program has chosen: the C run time's own formatting
// writes the host's decimal separator, and an answer or a trace line must not depend on it.

/// With `decimals` digits behind the point.
std::string FixedText(double value, int decimals);
/// With at most six digits in all, as the conversion %g gives them.
std::string ShortText(double value);

} // namespace velmor
