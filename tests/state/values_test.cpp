// The values' texts: what is taken, what is refused, what comes out.

#include <algorithm>
#include <map>
#include <span>

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

/// Bytes of the registry as everything that they can be. "|" stands for a zero, "~" at the end for half a unit.
std::string Decoded(const std::string& text)
{
    std::u16string units(text.begin(), text.end());
    std::ranges::replace(units, u'|', u'\0');
    const auto bytes = std::as_bytes(std::span(units)).first(units.size() * 2 - (text.ends_with('~') ? 1 : 0));
    std::vector<std::string> texts;
    for (const std::u16string& one : DecodeTexts(bytes))
        texts.push_back(ToUtf8(one));
    const auto number = DecodeNumber(bytes);
    return testing_support::Show("text", ToUtf8(DecodeText(bytes)), "texts", texts, "number",
                                 number ? std::to_string(*number) : "none");
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
    {"data ", Decoded},
    {"list ",
     [](const std::string& text) {
         const auto parts = SplitList(text);
         return testing_support::Show(std::vector<std::string>(parts.begin(), parts.end()));
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
