#include <cmath>
#include <numeric>

#include <support/files.h>
#include <support/import_patch.h>
#include <support/trace/call_frame.h>
#include <support/traced.h>

using namespace testing_support;

namespace
{

using TraceLines = Traced;

const GUID SOME_GUID = {0xAD498944, 0x762F, 0x11D0, {0x8D, 0xCB, 0x00, 0xC0, 0x4F, 0xC3, 0x35, 0x8C}};
const SYSTEMTIME SOME_TIME = {2015, 5, 5, 7, 2, 5, 8, 9};

template <class... Values>
void TraceVars(Values... values)
{
    (TheTrace.TraceVar(TRACE_INFORMATION, "Op", "v", values), ...);
}
/// Wide and narrow.
void TraceIPv6(const char* pszText)
{
    TheTrace.TraceIPv6(TRACE_INFORMATION, "Op", "v", pszText);
    TheTrace.TraceIPv6(TRACE_INFORMATION, "Op", "v", pszText ? velmor::string(pszText).c_str() : nullptr);
}
void TraceBytes(unsigned int count)
{
    std::vector<unsigned char> bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0xA0));
    TheTrace.TraceBytes(TRACE_INFORMATION, "Op", "v", bytes.data(), count);
}

TEST_F(TraceLines, EveryFormOfValue)
{
    SetDecimalComma();
    TraceVars(L'\x65E5', '\xE9', L"two words", L"", static_cast<const wchar_t*>(nullptr), "caf\xE9",
              static_cast<const char*>(nullptr), std::wstring(L"cut\0off", 7), std::string("cut\0off", 7),
              velmor::string(L"\x421 \xD83D\xDE00"), velmor::string(L"\xD83D half a pair"), 0LL,
              std::numeric_limits<long long>::min(), BOOL{-2}, BOOL{0}, true, false, 2.5, 1.0 / 3, -1234567.0,
              SOME_GUID, GUID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, SOME_TIME);
    for (const char character : {'x', '\0', '\n', '\r'})
        TraceVars(character, static_cast<wchar_t>(character));
    for (const unsigned int count : {0U, 6U, 32U, 33U, 64U})
        TraceBytes(count);
    TheTrace.TraceIPv4(TRACE_INFORMATION, "Op", "not swapped", 0x0A01A8C0, false);
    TheTrace.TraceIPv4(TRACE_INFORMATION, "Op", "swapped", 0xC0A8010A, true);
    for (const char* pszText : std::initializer_list<const char*>{
             "2001:db8::1", "1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:8:", "::1:2", "1:2::", "fe80::A:1%11", "12345:0::ABCDEF",
             ":a", nullptr, "", "1", ":", "::", ":::", "fe80::1", "abcd", "1:2:3:4:5:6:7:8:x", "1::2::3:4",
             "::::::::::1:2"})
        TraceIPv6(pszText);
    // The case of digits stays, in byte dumps too, until the next IPv6 address.
    for (const unsigned long long number : {0xDEADBEEF00ULL, 0ULL})
        TheTrace.TraceHex(TRACE_INFORMATION, "Op", "v", number);
    TraceBytes(2);
    TraceIPv6("A:B");
    TraceBytes(1);
    golden->Lines(trace.Lines());
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
    for (const unsigned int level : {1U, 2U, 4U, 8U, 3U, 0U, 16U}) // several have no tag
        golden->Line("level", level, Written(level));
    dwThread = 0;
    golden->Line("thread", dwThread, Written(TRACE_ERROR));
    dwThread = 0xbcdef;
    TheTrace.TraceHex(TRACE_ERROR, "", "", 1);
    golden->Line("thread", dwThread, "in upper case", Written(TRACE_ERROR));
}

TEST_F(TraceLines, TheCallFrameSpeaksForTheOperation)
{
    const CallFrame frame("A::B");
    frame.Information("ulCount", 3UL);
    frame.Warning("step failed", "dwRc", DWORD{0xFFFFFFFF});
    frame.Verbose("flags", CallFrame::Hex{0x1F});
    frame.Verbose("address", velmor::ip_address());
    frame.Verbose("nothing", velmor::ip_address(velmor::string("no")));
    for (const double value : {0.5, 1e20, HUGE_VAL})
        frame.Verbose("value", value);
    EXPECT_FALSE(frame.Fail("Bad NIC GUID"));
    EXPECT_FALSE(frame.Fail("X failed", "dwRc", 5));
    EXPECT_FALSE(frame.FailAs("... ending(X failed)", "dwRc", 5));
    EXPECT_TRUE(frame.Succeed());
    EXPECT_FALSE(RunOperation("A::C", [](const CallFrame&) -> bool { throw std::runtime_error("oops"); }));
    EXPECT_FALSE(RunOperation("A::D", [](const CallFrame&) -> bool { throw 1; }));
    TheTrace.SetTraceLevel(0);
    TOLVA::ConvertIpAddressToDword(velmor::ip_address(velmor::string("no"))); // fails unseen
    golden->Lines(trace.Lines());
}

TEST_F(TraceLines, WhatALineCosts)
{
    int writes = 0, waits = 0, allocations = 0;
    TheTrace.SetTraceLevel(3);
    {
        const auto wait = PatchWait([&](DWORD) { return static_cast<DWORD>(++waits); });
        const velmor::string sText(L"short");
        const ImportPatch<void* (*)(std::size_t)> malloc("malloc", [&](auto original, std::size_t size) {
            ++allocations;
            return original(size);
        });
        const CallFrame frame("TOLVA::AnOperationWithALongName");
        frame.Verbose("a message that would not fit into any inline buffer");
        frame.Verbose("a message that would not fit into any inline buffer", "sVariable", sText);
        frame.Verbose("address", velmor::ip_address());
        frame.Ending(TRACE_VERBOSE, "a note that would not fit into any inline buffer");
        frame.Succeed();
        TheTrace.SetTraceLevel(0);
        frame.Fail("a reason that would not fit into any inline buffer", "dwRc", 5);
        TheTrace.SetTraceLevel(3);
        EXPECT_EQ(0, allocations) << "a masked line allocates";
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
