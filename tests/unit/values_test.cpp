#include <atomic>
#include <cwchar>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include <support/golden.h>
#include <support/import_patch.h>
#include <support/printers.h>
#include <zelk_nm/ip_address.h>
#include <zelk_nm/network_error.h>
#include <zelk_nm/string.h>

using velmor::ip_address;
using velmor::NetworkError;
using Text = velmor::string;

namespace
{

TEST(String, ConstructionAndAssignmentFromEveryKind)
{
    const wchar_t* const pszNoWide = nullptr;
    const char* const pszNoNarrow = nullptr;
    // Around the end of the inline buffer.
    for (const wchar_t* pszText : {L"", L"123456", L"1234567", L"12345678", L"a much longer text than the others"})
    {
        const std::wstring sWide(pszText);
        const std::string sNarrow(sWide.begin(), sWide.end());
        Text a, b, c, d;
        a = pszText;
        b = sNarrow.c_str();
        c = sWide;
        d = a;
        for (const Text& text :
             {Text(pszText), Text(sNarrow.c_str()), Text(sWide), Text(pszText, sWide.size()), a, b, c, d})
        {
            EXPECT_STREQ(pszText, text.c_str());
            EXPECT_EQ(sWide.size(), text.size());
            EXPECT_EQ(sWide.empty(), text.empty());
            EXPECT_STREQ(sNarrow.c_str(), text.narrow_c_str());
        }
        Text moved(std::move(a));
        b = std::move(moved);
        EXPECT_EQ(c, b);
        EXPECT_TRUE(a.empty() && moved.empty()); // NOLINT(bugprone-use-after-move): the state is promised
        EXPECT_STREQ("", moved.narrow_c_str());
    }
    Text text(L"x");
    text = pszNoWide;
    EXPECT_TRUE(text.empty() && Text(pszNoWide).empty() && Text(pszNoNarrow).empty() && Text(pszNoWide, 3).empty());
    text.append(pszNoWide).append(pszNoWide, 3) += pszNoNarrow;
    EXPECT_TRUE((text = pszNoNarrow).empty());
    Text& same = text = L"x";
    EXPECT_EQ(L"x", std::wstring((text = std::move(same)).c_str()));
    EXPECT_FALSE(text == Text(L"y"));
    EXPECT_FALSE(TOLVA::HARDWARE_ADDRESS(L"1-2-3-4-5-6") == TOLVA::HARDWARE_ADDRESS(L"1-2-3-4-5-7"));
}

TEST(String, NarrowViewFollowsEveryChange)
{
    Text text(L"abc");
    const auto Narrow = [&] { return std::string(text.narrow_c_str()); };
    EXPECT_EQ("abc", Narrow());
    EXPECT_EQ("abcd", (text += L'd', Narrow()));
    EXPECT_EQ("abcdef", (text.append(L"efg", 2), Narrow()));
    EXPECT_EQ("af", (text.erase(1, 4), Narrow()));
    EXPECT_EQ("af!", (text += "!", Narrow()));
    EXPECT_EQ("x", (text = Text("x"), Narrow()));
    EXPECT_EQ("", (text.erase(), Narrow()));
    EXPECT_EQ("?\xE9?", (text = L"\x65E5\xE9\xD83D", Narrow())) << "no counterpart in the locale";
    EXPECT_STREQ(L"\xE9", Text("\xE9").c_str());
}

TEST(String, AppendingItsOwnText)
{
    Text text(L"abcd");
    (text += text).append(text.c_str() + 4).append(text.c_str() + 2, 1);
    EXPECT_STREQ(L"abcdabcdabcdc", text.c_str());
    text = text.c_str() + 8;
    const Text& same = text;
    text = same;
    text = text.narrow_c_str();
    EXPECT_STREQ(L"abcdc", text.c_str());
}

TEST(String, SearchEraseAndOrder)
{
    Text text(L"X:\\a\\b.log");
    EXPECT_EQ(4U, text.rfind(L'\\'));
    EXPECT_EQ(2U, text.find(L'\\'));
    EXPECT_EQ(4U, text.find(L'\\', 3));
    EXPECT_EQ(5U, text.find(L"b.l"));
    EXPECT_EQ(Text::npos, text.find(L'\\', 99));
    EXPECT_EQ(Text::npos, text.rfind(L'z'));
    EXPECT_THROW(text.erase(11), std::out_of_range);
    EXPECT_STREQ(L"X:\\a", text.erase(4).c_str());
    EXPECT_TRUE(Text(L"a") < Text(L"ab") && Text(L"B") < Text(L"a") && !(Text(L"a") < Text(L"a")));
    EXPECT_NE(Text(L"a\0b", 3), Text(L"a"));
    EXPECT_EQ(Text(L"a\0b", 3), Text(L"a") + Text(L"\0b", 2));
}

TEST(String, ThreadsShareOneNarrowView)
{
    for (int round = 0; round < 100; ++round)
    {
        const Text text(L"shared by all threads");
        constexpr int THREADS = 4;
        // Not a std::latch: the run time's waiting can miss the last arrival where it has no futex.
        std::atomic<int> ready = 0;
        const char* views[THREADS] = {};
        {
            std::vector<std::jthread> threads;
            for (const char*& pszView : views)
                threads.emplace_back([&] {
                    for (++ready; ready < THREADS;)
                        std::this_thread::yield();
                    pszView = text.narrow_c_str();
                });
        }
        for (const char* pszView : views)
            ASSERT_EQ(views[0], pszView);
        ASSERT_STREQ("shared by all threads", views[0]);
    }
}

TEST(IpAddress, ParsesAndFormats)
{
    testing_support::Golden golden;
    for (const wchar_t* pszText : {L"192.168.1.10", L"0.0.0.0", L"255.255.255.255", L"10.0.0.99:99", L"::", L"::99",
                                   L"2001:DB8:0:0::99", L"fe80::1%7", L"[2001:db8::1]:80", L"", L" ", L"256.1.1.1",
                                   L"1.2.3.4.5", L"1::2::3", L"12345::", L"localhost", L"\x0661.1.1.1"})
    {
        const ip_address address{Text(pszText)};
        golden.Line(pszText, "is", address, "of family", address.family());
        EXPECT_EQ(address.is_valid(), address == address);
        EXPECT_NE(address, ip_address(Text(L"9.9.9.9")));
        EXPECT_EQ(0, address.sockaddr().Ipv4.sin_port);
        EXPECT_TRUE(!address.is_valid() || address == ip_address{Text(address)});
    }
    EXPECT_EQ(Text(L"0.0.0.0"), Text(ip_address()));
    EXPECT_NE(ip_address(Text(L"none")), ip_address());
    EXPECT_FALSE(ip_address(Text(L"1.2.3.4")) == ip_address(Text(L"::ffff:1.2.3.4")));
}

TEST(IpAddress, StructuresAndWhatEqualityIgnores)
{
    SOCKADDR_INET sa = {};
    sa.Ipv6 = {AF_INET6, 80, 5, IN6ADDR_LOOPBACK_INIT, {7}};
    for (const ip_address& address : {ip_address(sa), ip_address(sa.Ipv6)})
    {
        EXPECT_EQ(ip_address(Text(L"::1")), address);
        EXPECT_EQ(7U, address.sockaddr().Ipv6.sin6_scope_id);
        EXPECT_EQ(Text(L"::1"), Text(address));
        for (std::size_t byte = 0; byte < 16; ++byte)
        {
            SOCKADDR_INET other = sa;
            other.Ipv6.sin6_addr.s6_addr[byte] ^= 0x80;
            EXPECT_NE(ip_address(other), address) << byte;
        }
    }
    const ip_address ipv4(Text(L"1.2.3.4"));
    sa = ipv4.sockaddr();
    sa.Ipv4.sin_port = 80;
    EXPECT_EQ(ipv4, ip_address(sa));
    EXPECT_EQ(ipv4, ip_address(sa.Ipv4));
    sa.si_family = AF_UNSPEC;
    EXPECT_EQ(ip_address::INVALID_FAMILY, ip_address(sa).family());
    EXPECT_EQ(AF_UNSPEC, ip_address(sa.Ipv4).family()) << "this structure is copied whole";
}

int ThrownCode(const ip_address& address)
{
    try
    {
        return static_cast<int>(Text(address).size()) * 0;
    }
    catch (const NetworkError& error)
    {
        EXPECT_EQ("Network Error: code = " + std::to_string(error.Code()), error.what());
        EXPECT_EQ(error.what(), NetworkError(error).Message());
        return error.Code();
    }
}

TEST(IpAddress, FormattingThrowsWinsocksCode)
{
    EXPECT_EQ(WSAEAFNOSUPPORT, ThrownCode(ip_address(Text(L"none"))));
    EXPECT_STREQ("Network Error: code = -1", NetworkError(-1).what());
    const auto patch = PATCH_IMPORT(WSAAddressToStringA, [](auto...) {
        ::WSASetLastError(WSAENOBUFS);
        return SOCKET_ERROR;
    });
    EXPECT_EQ(WSAENOBUFS, ThrownCode(ip_address()));
    EXPECT_EQ(WSAENOBUFS, ThrownCode(ip_address(Text(L"::1"))));
    EXPECT_EQ(WSAEAFNOSUPPORT, ThrownCode(ip_address(Text(L"none"))));
}

} // namespace
