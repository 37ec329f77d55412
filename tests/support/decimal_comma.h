#pragma once

#include <clocale>

#include <gtest/gtest.h>

namespace testing_support
{

/// A host program whose locale has a decimal comma, for one scope.
class DecimalComma
{
public:
    DecimalComma()
    {
        std::setlocale(LC_NUMERIC, "German_Germany");
        EXPECT_STREQ(",", std::localeconv()->decimal_point);
    }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;
    ~DecimalComma() { std::setlocale(LC_NUMERIC, "C"); }
};

} // namespace testing_support
