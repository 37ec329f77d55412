#include <support/platform/number_text.h>

#include <cstdio>

namespace velmor
{
namespace
{

/// What stands between the digits is the separator, which takes several bytes in some encodings. It is not asked for:
/// another thread may be changing the locale.
std::string WithDecimalPoint(std::string sText)
{
    const std::size_t begin = sText.find_first_not_of("-0123456789");
    const std::size_t end = sText.find_first_of("0123456789e", begin);
    if (end != std::string::npos && end > begin)
        sText.replace(begin, end - begin, ".");
    return sText;
}

} // namespace

std::string FixedText(double value, int decimals)
{
    char text[352]; // the largest number has 309 digits before the separator
    std::snprintf(text, sizeof(text), "%.*f", decimals, value);
    return WithDecimalPoint(text);
}

std::string ShortText(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%g", value);
    return WithDecimalPoint(text);
}

} // namespace velmor
