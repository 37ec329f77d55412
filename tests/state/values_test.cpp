// The values' texts: what is taken, what is refused, what comes out.

#include <map>

#include <gtest/gtest.h>

#include <state/fields/field.h>
#include <state/machine/persistent_route.h>
#include <state/platform/utf8.h>
#include <state/values/guid.h>
#include <state/values/hardware_address.h>
#include <state/values/ip_prefix.h>
#include <state/values/registry_data.h>
#include <support/golden.h>
#include <support/import_patch.h>

using namespace zelk;

namespace
{

template <class T>
std::string Written(const std::optional<T>& value)
{
    return value ? value->ToText() : "refused";
}

std::string KindOf(const IpAddress& address)
{
    return std::string(address.IsUnspecified() ? ", unspecified" : "") + (address.IsLoopback() ? ", loopback" : "") +
           (address.IsMulticast() ? ", multicast" : "") + (address.IsLinkLocal() ? ", link-local" : "");
}

using Reader = std::string (*)(const std::string& text);
const std::map<std::string, Reader> READERS = {
    {"address ",
     [](const std::string& text) {
         const auto address = IpAddress::Parse(text);
         return Written(address) + (address ? KindOf(*address) : "");
     }},
    {"prefix ",
     [](const std::string& text) {
         const auto prefix = IpPrefix::Parse(text);
         return Written(prefix) + (prefix ? " in " + prefix->Network().ToText() : "");
     }},
    {"mask ",
     [](const std::string& text) {
         const auto length = PrefixLengthOfMask(*IpAddress::Parse(text));
         return length ? std::to_string(*length) : "refused";
     }},
    {"hardware address ", [](const std::string& text) { return Written(HardwareAddress::Parse(text)); }},
    {"GUID ", [](const std::string& text) { return Written(Guid::Parse(text)); }},
    {"persistent route ",
     [](const std::string& text) {
         const auto route = ParsePersistentRoute(text);
         return route ? ToJson(*route).dump() : "refused";
     }},
    {"date ", [](const std::string& text) { return IsoDate(text).value_or("refused"); }},
};

TEST(Values, AreReadStrictlyAndWrittenInOneForm)
{
    testing_support::ExpectTranscript([](const std::string& question) {
        const std::size_t quote = question.find('"');
        return READERS.at(question.substr(0, quote))(question.substr(quote + 1, question.size() - quote - 2));
    });
}

TEST(Values, PrefixesContainTheAddressesOfTheirNetwork)
{
    EXPECT_TRUE(IpPrefix::Parse("192.0.2.150/27")->Contains(*IpAddress::Parse("192.0.2.159")));
    EXPECT_FALSE(IpPrefix::Parse("192.0.2.150/27")->Contains(*IpAddress::Parse("192.0.2.160")));
    EXPECT_FALSE(IpPrefix::Parse("0.0.0.0/0")->Contains(*IpAddress::Parse("::")));
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
}

TEST(Utf8, HasNoHalfOfAPair)
{
    EXPECT_EQ("a\xF0\x90\x80\x80", ToUtf8(u"a\xD800\xDC00"));
    for (const char16_t* const text : {u"a\xD800", u"a\xDC00", u"a\xDFFF", u"a\xDBFF"})
        EXPECT_EQ("a\xEF\xBF\xBD", ToUtf8(text));
    EXPECT_EQ("\xEF\xBF\xBDz", ToUtf8(u"\xD800z"));
    EXPECT_EQ("\xEE\x80\x80", ToUtf8(u"\xE000"));
}

TEST(Utf8, IsComparedEvenWhereTheSystemCannotConvertIt)
{
    EXPECT_TRUE(EqualIgnoringCase("lan \xC3\xA4", "LAN \xC3\x84"));
    const auto patch = PATCH_IMPORT(LCMapStringW, [](auto...) { return 0; });
    EXPECT_TRUE(EqualIgnoringCase("lan0", "lan0"));
    EXPECT_FALSE(EqualIgnoringCase("lan0", "lan1"));
}

} // namespace
