// The values' texts: what is taken, what is refused, what comes out.

#include <gtest/gtest.h>

#include <state/machine/persistent_route.h>
#include <state/values/guid.h>
#include <state/values/hardware_address.h>
#include <state/values/ip_prefix.h>
#include <state/values/registry_data.h>

using namespace zelk;

namespace
{

struct TextCase
{
    const char* text;
    const char* written; ///< null for a text that is refused
};

template <class T>
void ExpectTexts(std::initializer_list<TextCase> cases)
{
    for (const TextCase& row : cases)
    {
        SCOPED_TRACE(row.text);
        const auto value = T::Parse(row.text);
        EXPECT_EQ(row.written != nullptr ? row.written : "refused", value ? value->ToText() : "refused");
    }
}

TEST(IpAddress, TextIsStrictAndWrittenInTheShortestForm)
{
    ExpectTexts<IpAddress>({{"255.255.255.255", "255.255.255.255"},
                            {"256.0.0.1", nullptr},
                            {"1.2.3", nullptr},
                            {"01.2.3.4", nullptr},
                            {" 1.2.3.4", nullptr},
                            {"", nullptr},
                            {"::", "::"},
                            {"2001:0DB8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
                            {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
                            {"1:2:3:4:5:6:7::", "1:2:3:4:5:6:7:0"},
                            {"::ffff:192.0.2.1", "::ffff:192.0.2.1"},
                            {"64:ff9b::192.0.2.1", "64:ff9b::c000:201"},
                            {"1:2:3:4:5:6:7:8::", nullptr},
                            {"1::2::3", nullptr},
                            {"::1.2.3.4:5", nullptr},
                            {"fe80::1%5", nullptr}});
}

TEST(IpPrefix, TextLengthAndNetwork)
{
    ExpectTexts<IpPrefix>({{"192.0.2.20/24", "192.0.2.20/24"},
                           {"0.0.0.0/0", "0.0.0.0/0"},
                           {"::/128", "::/128"},
                           {"192.0.2.20/33", nullptr},
                           {"::/129", nullptr},
                           {"192.0.2.20/024", nullptr},
                           {"192.0.2.20/24 ", nullptr}});
    EXPECT_EQ("192.0.2.128/27", IpPrefix::Parse("192.0.2.150/27")->Network().ToText());
    EXPECT_EQ("2001:db8:8000::/33", IpPrefix::Parse("2001:db8:ffff::1/33")->Network().ToText());
    EXPECT_TRUE(IpPrefix::Parse("192.0.2.150/27")->Contains(*IpAddress::Parse("192.0.2.159")));
    EXPECT_FALSE(IpPrefix::Parse("192.0.2.150/27")->Contains(*IpAddress::Parse("192.0.2.160")));
    EXPECT_FALSE(IpPrefix::Parse("0.0.0.0/0")->Contains(*IpAddress::Parse("::")));
    for (const auto& [mask, length] : {std::pair("255.255.255.0", 24), {"0.0.0.0", 0}, {"255.255.255.255", 32}})
        EXPECT_EQ(length, PrefixLengthOfMask(*IpAddress::Parse(mask)));
    EXPECT_FALSE(PrefixLengthOfMask(*IpAddress::Parse("255.0.255.0")));
    EXPECT_FALSE(PrefixLengthOfMask(*IpAddress::Parse("0.0.0.255")));
}

TEST(IpAddress, Kinds)
{
    struct
    {
        const char* text;
        bool unspecified, loopback, multicast, linkLocal;
    } const rows[] = {{"0.0.0.0", true, false, false, false},    {"127.8.0.1", false, true, false, false},
                      {"239.1.2.3", false, false, true, false},  {"169.254.3.4", false, false, false, true},
                      {"240.0.0.1", false, false, false, false}, {"::", true, false, false, false},
                      {"::1", false, true, false, false},        {"ff02::1", false, false, true, false},
                      {"febf::1", false, false, false, true},    {"fec0::1", false, false, false, false}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.text);
        const IpAddress address = IpAddress::Parse(row.text).value();
        EXPECT_EQ(row.unspecified, address.IsUnspecified());
        EXPECT_EQ(row.loopback, address.IsLoopback());
        EXPECT_EQ(row.multicast, address.IsMulticast());
        EXPECT_EQ(row.linkLocal, address.IsLinkLocal());
    }
}

TEST(HardwareAddress, Text)
{
    ExpectTexts<HardwareAddress>({{"02-00-5e-10-00-0a", "02-00-5E-10-00-0A"},
                                  {"02:00:5E:10:00:0A", "02-00-5E-10-00-0A"},
                                  {"02005E10000A", "02-00-5E-10-00-0A"},
                                  {"010203040506070809", nullptr},
                                  {"02-00-5E-10-00", nullptr},
                                  {"02-00-5E-10-00-0", nullptr},
                                  {"02-00:5E-10-00-0A", nullptr}});
}

TEST(Guid, Text)
{
    constexpr const char* GUID = "{4D36E972-E325-11CE-BFC1-08002BE10318}";
    ExpectTexts<Guid>({{"{4d36e972-e325-11ce-bfc1-08002be10318}", GUID},
                       {"4D36E972-E325-11CE-BFC1-08002BE10318", GUID},
                       {"{4D36E972-E325-11CE-BFC1-08002BE10318", nullptr},
                       {"(4D36E972-E325-11CE-BFC1-08002BE10318)", nullptr},
                       {"4D36E972-E325-11CE-BFC1-08002BE1031", nullptr},
                       {"4D36E972-E325-11CE-BFC1-08002BE1031G", nullptr},
                       {"4D36E972E-325-11CE-BFC1-08002BE10318", nullptr},
                       {"", nullptr}});
}

TEST(PersistentRoute, Text)
{
    const auto route = ParsePersistentRoute("198.18.0.0,255.254.0.0,192.0.2.1,7");
    ASSERT_TRUE(route);
    EXPECT_EQ("198.18.0.0/15", route->destination.ToText());
    EXPECT_EQ("192.0.2.1", route->nextHop.ToText());
    EXPECT_EQ(7U, route->metric);
    EXPECT_EQ(RouteStore::PERSISTENT, route->store);
    for (const char* const text : {"", "198.18.0.0,255.254.0.0,192.0.2.1", "198.18.0.0,255.254.0.0,192.0.2.1,",
                                   "198.18.0.0,255.0.255.0,192.0.2.1,7", "198.18.0.0,255.254.0.0,192.0.2.1,7,8",
                                   "::,255.254.0.0,192.0.2.1,7", "198.18.0.0,255.254.0.0,::1,7"})
        EXPECT_FALSE(ParsePersistentRoute(text)) << text;
}

std::vector<std::byte> Bytes(std::u16string_view text, std::size_t extra = 0)
{
    const auto units = std::as_bytes(std::span(text));
    std::vector<std::byte> bytes(units.begin(), units.end());
    bytes.resize(bytes.size() + extra, std::byte{'x'});
    return bytes;
}

TEST(RegistryData, WithoutTerminatorsAndOfOddSizes)
{
    using List = std::vector<std::u16string>;
    EXPECT_EQ(u"ab", DecodeText(Bytes(u"ab")));
    EXPECT_EQ(u"ab", DecodeText(Bytes({u"ab\0cd", 5})));
    EXPECT_EQ(u"ab", DecodeText(Bytes(u"ab", 1)));
    EXPECT_EQ(u"", DecodeText({}));
    EXPECT_EQ((List{u"a", u"b"}), DecodeTexts(Bytes({u"a\0b\0\0", 5})));
    EXPECT_EQ((List{u"a", u"b"}), DecodeTexts(Bytes(std::u16string_view(u"a\0b", 3), 1)));
    EXPECT_EQ((List{u"a"}), DecodeTexts(Bytes({u"a\0\0b\0", 5})));
    EXPECT_EQ(List(), DecodeTexts(Bytes({u"\0", 1})));
    EXPECT_EQ(0x04030201U, DecodeNumber(Bytes(u"\x0201\x0403")));
    EXPECT_FALSE(DecodeNumber(Bytes(u"\x0201")));
    EXPECT_FALSE(DecodeNumber(Bytes(u"\x0201\x0403", 1)));
    EXPECT_EQ((std::vector<std::string_view>{"a", "b", "c"}), SplitList(" a, b;c,,"));
    EXPECT_EQ("2024-02-29", IsoDate("2/29-2024"));
    for (const char* const text : {"2-30-2024", "2-29-2023", "13-1-2024", "1-1-1979", "1-1", "1-1-2024 ", ""})
        EXPECT_FALSE(IsoDate(text)) << text;
}

} // namespace
