#include <functional>
#include <numeric>

#include <support/decimal_comma.h>
#include <support/files.h>
#include <support/resources.h>
#include <support/trace/call_frame.h>
#include <support/traced.h>

using namespace testing_support;

namespace
{

using TraceLines = Traced;

const GUID SOME_GUID = {0xAD498944, 0x762F, 0x11D0, {0x8D, 0xCB, 0x00, 0xC0, 0x4F, 0xC3, 0x35, 0x8C}};
const SYSTEMTIME SOME_TIME = {2015, 5, 5, 7, 2, 5, 8, 9};

/// One call and the lines that it writes, after "[I] Op : v".
struct Form
{
    std::vector<std::string> values;
    std::function<void()> trace;
};

template <class T>
Form Value(const std::string& sValue, T value)
{
    return {{" = " + sValue}, [=] { TheTrace.TraceVar(TRACE_INFORMATION, "Op", "v", value); }};
}
Form Hex(const std::string& sValue, unsigned long long value)
{
    return {{" = " + sValue}, [=] { TheTrace.TraceHex(TRACE_INFORMATION, "Op", "v", value); }};
}
Form IPv4(const std::string& sValue, unsigned long ulAddress, bool bSwap)
{
    return {{" = " + sValue}, [=] { TheTrace.TraceIPv4(TRACE_INFORMATION, "Op", "v", ulAddress, bSwap); }};
}
Form IPv6(const std::string& sValue, const char* pszText)
{
    return {{" = " + sValue, " = " + sValue}, [=] {
                // Wide and narrow must not differ.
                TheTrace.TraceIPv6(TRACE_INFORMATION, "Op", "v", pszText);
                TheTrace.TraceIPv6(TRACE_INFORMATION, "Op", "v", pszText ? velmor::string(pszText).c_str() : nullptr);
            }};
}
Form Bytes(std::vector<std::string> values, unsigned int count)
{
    return {std::move(values), [=] {
                std::vector<unsigned char> bytes(count);
                std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0xA0));
                TheTrace.TraceBytes(TRACE_INFORMATION, "Op", "v", bytes.data(), count);
            }};
}

TEST_F(TraceLines, EveryFormOfValue)
{
    const std::string sRow1 =
        "a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af b0 b1 b2 b3 b4 b5 b6 b7 b8 b9 ba bb bc bd be bf";
    const std::string sRow2 =
        "c0 c1 c2 c3 c4 c5 c6 c7 c8 c9 ca cb cc cd ce cf d0 d1 d2 d3 d4 d5 d6 d7 d8 d9 da db dc dd de df";
    const DecimalComma comma;
    std::vector<Form> forms = {
        Value("'\xE6\x97\xA5'", L'\x65E5'), Value("'\xC3\xA9'", '\xE9'), Value("\"two words\"", L"two words"),
        Value("\"\"", L""), Value("\"\"", static_cast<const wchar_t*>(nullptr)), Value("\"caf\xC3\xA9\"", "caf\xE9"),
        Value("\"\"", static_cast<const char*>(nullptr)), Value("\"cut\"", std::wstring(L"cut\0off", 7)),
        Value("\"cut\"", std::string("cut\0off", 7)),
        Value("\"\xD0\xA1 \xF0\x9F\x98\x80\"", velmor::string(L"\x421 \xD83D\xDE00")),
        Value("\"\xEF\xBF\xBD half a pair\"", velmor::string(L"\xD83D half a pair")), Value("0", 0LL),
        Value("-9223372036854775808", std::numeric_limits<long long>::min()), Value("true", BOOL{-2}),
        Value("false", BOOL{0}), Value("true", true), Value("false", false), Value("2.5", 2.5),
        Value("0.333333", 1.0 / 3), Value("-1.23457e+06", -1234567.0),
        Value("{ AD498944-762F-11D0-8DCB-00C04FC3358C }", SOME_GUID),
        Value("{ 00000001-0002-0003-0405-060708090A0B }", GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}),
        Value("07/05/2015 02:05:08", SOME_TIME), Bytes({" = "}, 0), Bytes({" = a0 a1 a2 a3 a4 a5 "}, 6),
        Bytes({" = " + sRow1, ""}, 32), Bytes({" = ", sRow1, "c0 "}, 33), Bytes({" = ", sRow1, sRow2, ""}, 64),
        IPv4("192.168.1.10", 0x0A01A8C0, false), IPv4("192.168.1.10", 0xC0A8010A, true),
        IPv6("2001:0db8:0000:0000:0000:0000:0000:0001", "2001:db8::1"),
        IPv6("0001:0002:0003:0004:0005:0006:0007:0008", "1:2:3:4:5:6:7:8"),
        IPv6("0001:0002:0003:0004:0005:0006:0007:0008", "1:2:3:4:5:6:7:8:"),
        IPv6("0000:0000:0000:0000:0000:0000:0001:0002", "::1:2"),
        IPv6("0001:0002:0000:0000:0000:0000:0000:0000", "1:2::"),
        IPv6("fe80:0000:0000:0000:0000:0000:000a:0111", "fe80::A:1%11"),
        IPv6("2345:0000:0000:0000:0000:0000:0000:cdef", "12345:0::ABCDEF"),
        IPv6("0000:000a:0000:0000:0000:0000:0000:0000", ":a"),
        // The case of digits stays, in byte dumps too, until the next IPv6 address.
        Hex("0xDEADBEEF00", 0xDEADBEEF00), Hex("0x0", 0), Bytes({" = A0 A1 "}, 2),
        IPv6("000a:000b:0000:0000:0000:0000:0000:0000", "A:B"), Bytes({" = a0 "}, 1)};
    for (const auto& [character, sName] :
         {std::pair<char, std::string>('x', "'x'"), {'\0', "'<NULL>'"}, {'\n', "'<LF>'"}, {'\r', "'<CR>'"}})
        forms.insert(forms.end(), {Value(sName, character), Value(sName, static_cast<wchar_t>(character))});
    for (const char* pszText : std::initializer_list<const char*>{nullptr, "", "1", ":", "::", ":::", "fe80::1", "abcd",
                                                                  "1:2:3:4:5:6:7:8:9", "1::2::3:4", "::::::::::1:2"})
        forms.push_back(IPv6("<Invalid IPv6 address>", pszText));
    for (const Form& form : forms)
    {
        trace.Empty();
        form.trace();
        auto expected = form.values;
        for (std::string& sLine : expected)
            if (sLine.starts_with(" ="))
                sLine.insert(0, "[I] Op : v");
        EXPECT_EQ(expected, trace.Lines());
    }
}

TEST_F(TraceLines, ThePrefixToTheByte)
{
    DWORD dwThread = 0xab4;
    const auto time = PATCH_IMPORT(GetLocalTime, [](SYSTEMTIME* p) { *p = {2015, 5, 5, 5, 2, 5, 8, 7}; });
    const auto id = PATCH_IMPORT(GetCurrentThreadId, [&] { return dwThread; });
    const auto Written = [&](unsigned int level) {
        trace.Empty();
        TheTrace.Trace(level, "A::B", "go");
        const std::string sBytes = trace.Bytes();
        return sBytes.starts_with("[2015-05-05 02:05:08.007]:") ? sBytes.substr(26) : sBytes;
    };
    EXPECT_EQ("0ab4:[E]: A::B : go\r\n", Written(TRACE_ERROR));
    EXPECT_EQ("0ab4:[W]: A::B : go\r\n", Written(TRACE_WARNING));
    EXPECT_EQ("0ab4:[I]: A::B : go\r\n", Written(TRACE_INFORMATION));
    EXPECT_EQ("0ab4:[V]: A::B : go\r\n", Written(TRACE_VERBOSE));
    EXPECT_EQ("0ab4A::B : go\r\n", Written(TRACE_ERROR | TRACE_WARNING)) << "no tag";
    EXPECT_EQ("", Written(0) + Written(16));
    dwThread = 0;
    EXPECT_EQ("0000:[E]: A::B : go\r\n", Written(TRACE_ERROR));
    dwThread = 0xbcdef;
    TheTrace.TraceHex(TRACE_ERROR, "", "", 1);
    EXPECT_EQ("BCDEF:[E]: A::B : go\r\n", Written(TRACE_ERROR));
}

TEST_F(TraceLines, TheBannerStandsBareAndAtAnyLevelButNone)
{
    TheTrace.SetTraceLevel(1);
    TheTrace.TraceBanner("ab");
    EXPECT_EQ("\r\n********\r\n** ab **\r\n********\r\n\r\n", trace.Bytes());
    trace.Empty();
    TheTrace.SetTraceLevel(0);
    TheTrace.TraceBanner("ab");
    TheTrace.Trace(TRACE_ERROR, "A", "b");
    EXPECT_EQ("", trace.Bytes());
}

TEST_F(TraceLines, TheCallFrameSpeaksForTheOperation)
{
    const CallFrame frame("A::B");
    frame.Information("ulCount", 3UL);
    frame.Warning("step failed", "dwRc", DWORD{0xFFFFFFFF});
    frame.Verbose("flags", CallFrame::Hex{0x1F});
    frame.Verbose("address", velmor::ip_address());
    frame.Verbose("nothing", velmor::ip_address(velmor::string("no")));
    EXPECT_FALSE(frame.Fail("Bad NIC GUID"));
    EXPECT_FALSE(frame.Fail("X failed", "dwRc", 5));
    EXPECT_FALSE(frame.FailAs("... ending(X failed)", "dwRc", 5));
    EXPECT_TRUE(frame.Succeed());
    EXPECT_FALSE(RunOperation("A::C", [](const CallFrame&) -> bool { throw std::runtime_error("oops"); }));
    EXPECT_FALSE(RunOperation("A::D", [](const CallFrame&) -> bool { throw 1; }));
    trace.ExpectLines(
        {"[V] A::B : starting ...", "[I] A::B : ulCount = 3", "[W] A::B : step failed : dwRc = 4294967295",
         "[V] A::B : flags = 0x1F", "[V] A::B : address = \"0.0.0.0\"", "[V] A::B : nothing = \"<invalid>\"",
         "[E] A::B : ... ending( Bad NIC GUID )", "[E] A::B : ... ending( X failed ) : dwRc = 5",
         "[E] A::B : ... ending(X failed) : dwRc = 5", "[V] A::B : ... ending", "[V] A::C : starting ...",
         "[E] A::C : ... ending( oops )", "[V] A::D : starting ...", "[E] A::D : ... ending( unknown exception )"});
}

TEST_F(TraceLines, WhatALineCosts)
{
    int writes = 0, waits = 0;
    TheTrace.SetTraceLevel(3);
    {
        const auto wait = PatchWait([&](DWORD) { return static_cast<DWORD>(++waits); });
        AllocationWatch watch;
        watch.Fail(1, 0);
        const velmor::string sText(L"short");
        const CallFrame frame("TOLVA::AnOperationWithALongName");
        frame.Verbose("a message that would not fit into any inline buffer");
        frame.Verbose("a message that would not fit into any inline buffer", "sVariable", sText);
        frame.Verbose("address", velmor::ip_address());
        frame.Ending(TRACE_VERBOSE, "a note that would not fit into any inline buffer");
        frame.Succeed();
        EXPECT_EQ(0U, watch.Count()) << "a masked line allocates";
    }
    EXPECT_EQ(0, waits) << "a masked line takes the mutex";

    const ImportPatch<decltype(&::WriteFile)> write("WriteFile", [&](auto... args) {
        ++writes;
        return write.Original()(args...);
    });
    TheTrace.TraceVar(TRACE_ERROR, "Op", "sLong", std::wstring(100000, L'\x65E5'));
    EXPECT_EQ(1, writes);
    EXPECT_EQ("[E] Op : sLong = \"", trace.Lines().at(0).substr(0, 18));
    TheTrace.TraceBanner("x");
    EXPECT_EQ(2, writes);
    EXPECT_EQ(300000U, trace.Lines().at(0).size() - 19);
}

} // namespace
