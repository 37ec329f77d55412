#pragma once

#include <clocale>
#include <memory>

#include <gmock/gmock.h>

#include <support/golden.h>
#include <support/printers.h>
#include <support/trace/trace.h>
#include <support/trace_file.h>

namespace testing_support
{

/// Starts every case with an empty trace file, everything traced and hexadecimal digits in lower case.
class Traced : public testing::Test
{
protected:
    Traced()
    {
        TheTrace.SetTraceLevel(4);
        TheTrace.TraceIPv6(TRACE_ERROR, "", "", L"");
        trace.Empty();
    }
    ~Traced() override
    {
        TheTrace.SetTraceLevel(3);
        std::setlocale(LC_NUMERIC, "C");
    }
    /// The host program's locale has one until the case ends.
    static void SetDecimalComma()
    {
        std::setlocale(LC_NUMERIC, "German_Germany");
        EXPECT_STREQ(",", std::localeconv()->decimal_point);
    }

    TraceFile trace;
    std::unique_ptr<Golden> golden = std::make_unique<Golden>();
};

} // namespace testing_support
